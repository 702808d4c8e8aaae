#pragma once

#include "core/async/TaskScope.h"
#include "core/authorization/MemoryProtection.h"
#include "core/authorization/StoredPassword.h"
#include "core/authorization/SudoAuth.h"
#include "core/trees/TreeCopier.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/OperationHistory.h"
#include "operations/PackageOperations.h"
#include "operations/UpgradeSafeguard.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/KegRollback.h"
#include "operations/snapshots/SnapshotManager.h"
#include "operations/snapshots/SnapshotRestore.h"
#include "tests/support/BrewWorld.h"
#include "userdata/UserDataManager.h"

#include <QDir>

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
    KegPreservationManager kegs{{preferences, logger, copier, path("kegs")}};
    KegRollback rollback{{kegs, logger, path("rollback.json")}};
    SnapshotManager snapshots{{queries, preferences, logger, path("snapshots")}};
    UserDataManager userData{path("data"), logger};
    OperationHistory history{userData};
    SnapshotRestore restore{{snapshots, kegs, rollback, history}};
    UpgradeSafeguard safeguard{{snapshots, kegs, logger}};
    PackageOperations operations{{.brew = brew,
                                  .queries = queries,
                                  .preferences = preferences,
                                  .logger = logger,
                                  .safeguard = safeguard,
                                  .rollback = rollback,
                                  .restore = restore,
                                  .history = history,
                                  .movedAsideNote = path("moved-aside.json"),
                                  .heldPinNote = path("held-pin.json")}};
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
        return app;
    }

    Result<OperationReport> perform(OperationRequest request) {
        return await(operations.perform(std::move(request), {.output = sink, .sudoAuth = &sudoAuth}));
    }
    Result<OperationReport> perform(OperationKind kind, const QList<PackageTarget> &packages) {
        return perform({.kind = kind, .packages = packages});
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
