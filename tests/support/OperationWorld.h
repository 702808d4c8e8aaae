#pragma once

#include "core/async/TaskScope.h"
#include "core/authorization/MemoryProtection.h"
#include "core/authorization/StoredPassword.h"
#include "core/authorization/SudoAuth.h"
#include "core/files/Trash.h"
#include "core/trees/TreeCopier.h"
#include "core/trees/TreeSync.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/OperationCenter.h"
#include "operations/casks/LostApplications.h"
#include "operations/casks/MovedAsideLeftover.h"
#include "operations/catalogue/UpdateHomebrew.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/KegRollback.h"
#include "operations/kegs/RollBackKegs.h"
#include "operations/oclp/CopyXattrsStub.h"
#include "operations/packages/HeldPin.h"
#include "operations/packages/InstallPackages.h"
#include "operations/packages/PackageServices.h"
#include "operations/packages/PinPackages.h"
#include "operations/packages/UninstallPackages.h"
#include "operations/packages/UpgradeAll.h"
#include "operations/packages/UpgradePackages.h"
#include "operations/packages/UpgradeSafeguard.h"
#include "operations/plan/OperationPlanner.h"
#include "operations/recovery/FileLeftovers.h"
#include "operations/recovery/LostLinks.h"
#include "operations/recovery/Recovery.h"
#include "operations/services/RestartServices.h"
#include "operations/snapshots/RestoreSnapshot.h"
#include "operations/snapshots/SnapshotManager.h"
#include "tests/support/BrewWorld.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>

namespace larkspur::test {

/// A verifier that knows one password, and can be made to take its time.
class FakeVerifier final : public PasswordVerifier {
  public:
    QByteArray right = "sesame";
    std::optional<Completion<Verification>> held;
    int asked = 0;

    Task<Verification> verify(Password password) override {
        ++asked;
        if (held)
            co_return co_await *held;
        co_return password.utf8() == right ? Verification::Matches : Verification::Differs;
    }
};

/// A safe in memory.
class FakeStore final : public PasswordStore {
  public:
    std::optional<QByteArray> copy;
    bool unlocks = true;
    bool keeps = true;
    QString reason;

    bool isAvailable() const override { return true; }
    bool hasCopy() const override { return copy.has_value(); }
    Task<std::optional<Password>> read(QString why) override {
        reason = why;
        co_return unlocks &&copy ? std::optional(Password(QByteArray(copy->constData(), copy->size())))
                                 : std::nullopt;
    }
    bool save(Password password) override {
        if (keeps)
            copy = QByteArray(password.utf8().constData(), password.utf8().size());
        return keeps;
    }
    void remove() override { copy.reset(); }
};

/// Remembers what was brought to the disk; one folder cannot be.
class RecordingSync final : public TreeSync {
  public:
    QStringList synced;
    QString failsAt;

    std::expected<void, QString> sync(const QString &folder) override {
        synced.append(folder);
        return folder == failsAt ? std::unexpected(QString("input/output error"))
                                 : FileByFileSync().sync(folder);
    }
};

/// Package operations on scripted answers and a prefix of real folders.
struct OperationWorld : BrewWorld {
    FakeVerifier verifier;
    FakeStore store;
    NullMemoryProtection memory;
    TaskScope tasks{logger};
    StoredPassword stored{store, verifier, preferences};
    SudoAuth sudoAuth{{verifier, stored, memory, tasks}};
    InventoryQueries queries{brew, preferences, logger};
    TreeCopier copier{shell, {"copy"}};
    RecordingSync sync;
    FolderTrash trash{path("trash")};
    KegPreservationManager kegs{{preferences, logger, copier, sync, path("kegs")}};
    KegRollback rollback{{kegs, sync, logger, path("notes")}};
    CaskSetting casks{
        .noteFolder = path("notes"), .trash = &trash, .prefix = {}, .applicationFolders = {path("apps")}};
    Recovery recovery{{brew, resolver, logger}, leftovers()};
    SnapshotManager snapshots{{queries, preferences, logger, path("snapshots")}};
    UpgradeSafeguard safeguard{{snapshots, kegs}};
    OperationPlanner planner{brew, queries};
    PackageServices packages{.queries = queries,
                             .preferences = preferences,
                             .planner = planner,
                             .safeguard = safeguard,
                             .kegs = kegs,
                             .rollback = rollback,
                             .snapshots = snapshots,
                             .casks = casks};
    OperationCenter center{{recovery, queries, sudoAuth, tasks, logger}};
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();

    OperationWorld() {
        shell.answer("--prefix", path("prefix").toUtf8() + '\n');
        shell.answer("services list --json", "[]");
        shell.answer("tap", "homebrew/core\n");
        // Most tests are about the upgrade itself.
        preferences.set(keys::kegPreservationEnabled, false);
        QDir().mkpath(path("prefix"));
    }

    QString prefix() const { return path("prefix"); }
    void addFormula(const QString &name, const QString &version) const {
        QDir().mkpath(prefix() + "/Cellar/" + name + '/' + version);
    }
    void remove(const QString &folder) const { QDir(prefix() + '/' + folder).removeRecursively(); }
    /// An installed cask and its application; returns the application's path.
    QString addCask(const QString &token, const QString &version) const {
        const QString app = path("apps") + '/' + token + ".app";
        QDir().mkpath(app + "/Contents");
        const QString staged = prefix() + "/Caskroom/" + token + '/' + version;
        QDir().mkpath(staged);
        QFile::link(app, staged + '/' + token + ".app");
        const QString metadata = prefix() + "/Caskroom/" + token + "/.metadata";
        QDir().mkpath(metadata);
        write(metadata + "/INSTALL_RECEIPT.json",
              "{\"uninstall_artifacts\":[{\"app\":[\"" + token.toUtf8() + ".app\"]}]}");
        return app;
    }
    std::vector<std::unique_ptr<Leftover>> leftovers() {
        std::vector<std::unique_ptr<Leftover>> all;
        all.push_back(std::make_unique<SecretLeftover>(askpass));
        all.push_back(std::make_unique<CopyXattrsLeftover>());
        all.push_back(std::make_unique<MovedAsideLeftover>(casks));
        all.push_back(std::make_unique<LostApplicationsLeftover>(casks));
        all.push_back(std::make_unique<KegStoreLeftover>(kegs));
        all.push_back(std::make_unique<KegRollback::Leftover>(rollback));
        all.push_back(std::make_unique<ReinstallLeftover>(path("notes")));
        all.push_back(std::make_unique<LostLinksLeftover>(path("notes")));
        all.push_back(std::make_unique<HeldPinLeftover>(path("notes")));
        return all;
    }
    QStringList notes() const { return QDir(path("notes")).entryList(QDir::Files | QDir::Hidden); }

    /// Until it has ended.
    OperationReport perform(OperationPtr operation, StopToken stop = {}) {
        OperationRun *run = center.create(std::move(operation));
        QObject::connect(run, &OperationRun::outputReceived, run,
                         [this](const OutputChange &change) { sink->receive(change); });
        const std::stop_callback onStop(std::move(stop), [run] { run->stop(); });
        center.start(run);
        if (!spinUntil([run] { return !run->isRunning(); }))
            qFatal("the operation has not ended");
        return run->report();
    }
    /// "upgrade" and the like, for tables of tests.
    OperationPtr operation(const QString &kind, const QList<PackageTarget> &targets) const {
        using Make = OperationPtr (*)(const PackageServices &, const QList<PackageTarget> &);
        static const QHash<QString, Make> makers{{"reinstall", &reinstallPackages},
                                                 {"uninstall", &uninstallPackages},
                                                 {"pin", &pinPackages},
                                                 {"unpin", &unpinPackages},
                                                 {"upgrade", &upgradePackages},
                                                 {"rollback", &rollBackKegs}};
        if (kind == "install")
            return installPackages(packages, targets);
        if (kind == "upgrade all")
            return upgradeOfAll(packages, targets, false);
        return makers[kind](packages, targets);
    }
    OperationReport perform(const QString &kind, const QList<PackageTarget> &targets) {
        return perform(operation(kind, targets));
    }
    /// The command lines that change something.
    QStringList changes() const {
        QStringList lines = shell.commandLines();
        lines.removeIf([](const QString &line) {
            return line == "--prefix" || line == "tap" || line == "services list --json";
        });
        return lines;
    }
};

} // namespace larkspur::test
