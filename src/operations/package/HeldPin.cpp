#include "operations/package/HeldPin.h"

#include "core/async/Worker.h"
#include "operations/installed/InstalledPackages.h"

#include <QJsonObject>

namespace larkspur {

namespace {

const QString kind = QStringLiteral("held-pin");

BrewArguments pinWords(const PackageName &name, bool isCask) {
    return isCask ? BrewArguments{"pin", "--cask", name} : BrewArguments{"pin", name};
}

} // namespace

HeldPin::HeldPin(PackageRun::Setting setting, PackageTarget package)
    : m_setting(std::move(setting))
    , m_package(std::move(package)) {}

Task<Result<PackageResult>> HeldPin::takeOff() {
    auto note = CrashNote::write(m_setting.casks.noteFolder, kind,
                                 {{QStringLiteral("prefix"), m_setting.prefix},
                                  {QStringLiteral("name"), m_package.name},
                                  {QStringLiteral("isCask"), m_package.isCask}});
    if (!note)
        co_return std::unexpected(BrewError::commandFailed(
            QStringLiteral("%1 stays pinned: %2").arg(m_package.name, note.error())));
    m_note = *note;
    PackageRun unpinning(m_setting, {.kind = OperationKind::Unpin}, m_package);
    co_return co_await unpinning.run();
}

Task<bool> HeldPin::putBack() {
    if (!m_note)
        co_return true;
    PackageRun::Setting unstoppable = m_setting;
    unstoppable.context = m_setting.context.repairing();
    PackageRun pinning(unstoppable, {.kind = OperationKind::Pin}, m_package);
    const auto pinned = co_await pinning.run();
    const bool isBack = pinned && pinned->isDone();
    if (isBack)
        m_note->remove();
    else if (m_setting.context.output)
        m_setting.context.output->addLine(
            QStringLiteral(
                "==> Warning: %1 was pinned and could not be pinned again. The next operation tries "
                "it once more.")
                .arg(m_package.name));
    co_return isBack;
}

HeldPinLeftover::HeldPinLeftover(const QString &noteFolder)
    : NoteLeftover({.folder = noteFolder,
                    .kind = kind,
                    .about = QStringLiteral("a pin that was taken off"),
                    .advice = QStringLiteral("Look whether all that you want pinned is.")}) {}

Task<NoteLeftover::Settled> HeldPinLeftover::settle(CrashNote note, RecoveryWork work) {
    const auto name = PackageName::parse(note.contents().value(QLatin1String("name")).toString());
    const QJsonValue isCaskField = note.contents().value(QLatin1String("isCask"));
    const bool isCask = isCaskField.toBool();
    if (!name || !isCaskField.isBool())
        co_return Settled::Unusable;
    const auto installed =
        co_await runInWorker([prefix = work.prefix] { return InstalledPackages::at(prefix); });
    if (!installed) {
        work.warn(QStringLiteral("It cannot be told whether %1 is still to be pinned: %2")
                      .arg(name->text(), installed.error()));
        co_return Settled::Not;
    }
    if (installed->versions(name->text(), isCask).isEmpty())
        co_return Settled::Done; // removed since
    if (installed->isPinned(name->text(), isCask))
        co_return Settled::Done;
    work.say(
        QStringLiteral("Pinning %1 again, as it was before an upgrade that was cut off.").arg(name->text()));
    const auto pinned = co_await work.session->stream({.arguments = pinWords(*name, isCask)}, work.context,
                                                      BrewSession::Style::Plain);
    if (pinned && pinned->succeeded())
        co_return Settled::Done;
    work.warn(QStringLiteral("%1 could not be pinned again.").arg(name->text()));
    co_return Settled::Not;
}

} // namespace larkspur
