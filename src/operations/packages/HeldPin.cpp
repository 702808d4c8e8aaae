#include "operations/packages/HeldPin.h"

#include "core/async/Worker.h"
#include "operations/installed/InstalledPackages.h"
#include "operations/packages/PackageCommand.h"

#include <QJsonObject>

namespace larkspur {

namespace {

const QString kind = QStringLiteral("held-pin");

} // namespace

HeldPin::HeldPin(LockedWork work, QString noteFolder, PackageTarget package)
    : m_work(std::move(work))
    , m_noteFolder(std::move(noteFolder))
    , m_package(std::move(package)) {}

Task<Result<bool>> HeldPin::takeOff() {
    auto note = CrashNote::write(m_noteFolder, kind,
                                 {{QStringLiteral("prefix"), m_work.prefix},
                                  {QStringLiteral("name"), m_package.name},
                                  {QStringLiteral("isCask"), m_package.isCask}});
    if (!note)
        co_return std::unexpected(BrewError::commandFailed(
            QStringLiteral("%1 stays pinned: %2").arg(m_package.name, note.error())));
    m_note = *note;
    const auto unpinned = co_await m_work.session->stream({.arguments = plainArguments("unpin", m_package)},
                                                          m_work.context, BrewSession::Style::Plain);
    if (!unpinned)
        co_return std::unexpected(unpinned.error());
    co_return true; // where Homebrew refused, it will refuse the upgrade too, and say why
}

Task<bool> HeldPin::putBack() {
    if (!m_note)
        co_return true;
    const LockedWork work = m_work.repairing();
    const auto pinned = co_await work.session->stream({.arguments = plainArguments("pin", m_package)},
                                                      work.context, BrewSession::Style::Plain);
    const bool isBack = pinned && pinned->succeeded();
    if (isBack)
        m_note->remove();
    else
        m_work.warn(QStringLiteral("%1 was pinned and could not be pinned again. The next operation tries "
                                   "it once more.")
                        .arg(m_package.name));
    m_note.reset();
    co_return isBack;
}

HeldPinLeftover::HeldPinLeftover(const QString &noteFolder)
    : NoteLeftover({.folder = noteFolder,
                    .kind = kind,
                    .about = QStringLiteral("a pin that was taken off"),
                    .advice = QStringLiteral("Look whether all that you want pinned is.")}) {}

Task<NoteLeftover::Settled> HeldPinLeftover::settle(CrashNote note, LockedWork work) {
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
    const auto pinned = co_await work.session->stream(
        {.arguments = plainArguments("pin", {.name = name->text(), .isCask = isCask})}, work.context,
        BrewSession::Style::Plain);
    if (pinned && pinned->succeeded())
        co_return Settled::Done;
    work.warn(QStringLiteral("%1 could not be pinned again.").arg(name->text()));
    co_return Settled::Not;
}

} // namespace larkspur
