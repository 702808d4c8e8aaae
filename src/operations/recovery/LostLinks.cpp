#include "operations/recovery/LostLinks.h"

#include "core/async/Worker.h"
#include "core/brew/BrewService.h"

#include <QJsonArray>
#include <QSet>

namespace larkspur {

namespace {

const QString kind = QStringLiteral("links");

QJsonObject contentsFor(const LostLinks::Names &names, const QString &prefix) {
    return {{QStringLiteral("prefix"), prefix},
            {QStringLiteral("linked"), QJsonArray::fromStringList(names.linked)},
            {QStringLiteral("whole"), QJsonArray::fromStringList(names.whole)}};
}

/// Nothing unless every one of them is a name.
std::optional<QStringList> plainNames(const QJsonValue &list) {
    if (!list.isArray())
        return std::nullopt;
    QStringList names;
    for (const QJsonValue &name : list.toArray()) {
        if (!PackageName::parse(name.toString()))
            return std::nullopt;
        names.append(name.toString());
    }
    return names;
}

/// The names in a note; nothing unless each of its fields is there and of its type. Notes of before it was
/// kept do not say what was whole.
std::optional<LostLinks::Names> namesOf(const QJsonObject &note, const QString &prefix) {
    const auto linked = plainNames(note.value(QLatin1String("linked")));
    const auto whole = plainNames(note.value(QLatin1String("whole")).toArray());
    if (note.value(QLatin1String("prefix")).toString() != prefix || !linked || !whole)
        return std::nullopt;
    return LostLinks::Names{*linked, *whole};
}

/// What is installed and has lost some of its links, or all.
QStringList lostOf(const LostLinks::Names &names, const InstalledPackages &installed) {
    const QSet<QString> whole(names.whole.begin(), names.whole.end());
    QStringList lost = names.linked;
    lost.removeIf([&](const QString &name) {
        const bool hasLost = installed.isHalfLinked(name) && whole.contains(name);
        const bool isGone = installed.formulaVersions(name).isEmpty() && installed.backupOf(name).isEmpty();
        return (installed.isLinked(name) && !hasLost) || isGone;
    });
    return lost;
}

/// Homebrew links nothing as long as its record says that all is linked.
Task<bool> linkAnew(PackageName name, bool hasRecord, LockedWork work) {
    if (hasRecord)
        co_await work.session->stream({.arguments = {"unlink", name}}, work.context,
                                      BrewSession::Style::Plain);
    const auto run = co_await work.session->stream({.arguments = {"link", "--overwrite", name}}, work.context,
                                                   BrewSession::Style::Plain);
    co_return run && run->succeeded();
}

/// Returns the formulae that could not be linked, or may not be.
Task<QStringList> linkAgain(LostLinks::Names names, LockedWork work) {
    const auto installed =
        co_await runInWorker([prefix = work.prefix] { return InstalledPackages::at(prefix); });
    if (!installed) {
        work.warn(QStringLiteral("It cannot be told whether links were lost: %1").arg(installed.error()));
        co_return QStringList(names.linked);
    }
    QStringList failed;
    for (const QString &text : lostOf(names, *installed)) {
        const auto name = PackageName::parse(text);
        if (!name)
            continue;
        const bool isUnsettled = !installed->backupOf(text).isEmpty(); // its keg may be half of one
        if (!isUnsettled)
            work.say(QStringLiteral("Linking %1 again").arg(text));
        if (!isUnsettled && co_await linkAnew(*name, installed->isLinked(text), work))
            continue;
        failed.append(text);
        work.warn(QStringLiteral("%1 was linked before and could not be linked again.").arg(text));
    }
    co_return QStringList(failed);
}

/// True if none is left. Else the note holds only those: what is linked now is its owner's to unlink.
Task<bool> settleLinks(LostLinks::Names names, CrashNote note, LockedWork work) {
    const QStringList failed = co_await linkAgain(names, work);
    if (failed.isEmpty() || failed.size() == names.linked.size())
        co_return failed.isEmpty();
    names.whole.removeIf([&failed](const QString &name) { return !failed.contains(name); });
    names.linked = failed;
    if (const auto written = note.update(contentsFor(names, work.prefix)); !written)
        work.warn(QStringLiteral("The note of what is still to be linked could not be written: ") +
                  written.error());
    co_return false;
}

} // namespace

LostLinks::LostLinks(const InstalledPackages &before, const QString &prefix, const QString &noteFolder)
    : m_names{.linked = before.linkedFormulae(), .whole = {}} {
    m_names.linked.removeIf(
        [](const QString &name) { return !PackageName::parse(name); }); // no command takes it
    m_names.whole = m_names.linked;
    m_names.whole.removeIf([&before](const QString &name) { return before.isHalfLinked(name); });
    if (m_names.linked.isEmpty())
        return;
    auto note = CrashNote::write(noteFolder, kind, contentsFor(m_names, prefix));
    if (note)
        m_note = std::move(*note);
    else
        m_complaint = QStringLiteral("No note of what is linked could be written, so links that are lost if "
                                     "Larkspur is killed now are not put back: %1")
                          .arg(note.error());
}

Task<bool> LostLinks::relink(LockedWork work) const {
    const Names names = m_names;
    const std::optional<CrashNote> note = m_note;
    work.context = work.context.repairing();
    const bool areSettled =
        co_await settleReinstalls(QSet<QString>(names.linked.begin(), names.linked.end()), work);
    const bool areLinked =
        note ? co_await settleLinks(names, *note, work) : (co_await linkAgain(names, work)).isEmpty();
    if (note && areLinked)
        note->remove();
    co_return areLinked &&areSettled;
}

LinkedBefore LostLinks::notedIn(const QString &noteFolder, const QString &prefix) {
    LinkedBefore noted;
    for (const CrashNote &note : CrashNote::standing(noteFolder, kind).readable)
        if (const auto names = namesOf(note.contents(), prefix))
            noted =
                noted.value_or(QSet<QString>()) + QSet<QString>(names->linked.begin(), names->linked.end());
    return noted;
}

LostLinksLeftover::LostLinksLeftover(const QString &noteFolder)
    : NoteLeftover({.folder = noteFolder,
                    .kind = kind,
                    .about = QStringLiteral("what was linked before an interrupted operation")}) {}

Task<NoteLeftover::Settled> LostLinksLeftover::settle(CrashNote note, LockedWork work) {
    const auto names = namesOf(note.contents(), work.prefix);
    if (!names)
        co_return Settled::Unusable;
    co_return co_await settleLinks(*names, note, work) ? Settled::Done : Settled::Not;
}

} // namespace larkspur
