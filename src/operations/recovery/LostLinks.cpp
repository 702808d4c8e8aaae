#include "operations/recovery/LostLinks.h"

#include "core/async/Worker.h"
#include "core/brew/BrewService.h"

#include <QJsonArray>

namespace larkspur {

namespace {

const QString kind = QStringLiteral("links");

QJsonObject contentsFor(const QStringList &names, const QString &prefix) {
    return {{QStringLiteral("prefix"), prefix},
            {QStringLiteral("linked"), QJsonArray::fromStringList(names)}};
}

/// The names in a note; nothing unless each of its fields is there and of its type.
std::optional<QStringList> namesOf(const QJsonObject &note, const QString &prefix) {
    const QJsonValue linked = note.value(QLatin1String("linked"));
    if (note.value(QLatin1String("prefix")).toString() != prefix || !linked.isArray())
        return std::nullopt;
    QStringList names;
    for (const QJsonValue &name : linked.toArray()) {
        if (!PackageName::parse(name.toString()))
            return std::nullopt;
        names.append(name.toString());
    }
    return names;
}

/// Returns the formulae that could not be linked, or may not be.
Task<QStringList> linkAgain(QStringList names, LockedWork work) {
    const auto installed =
        co_await runInWorker([prefix = work.prefix] { return InstalledPackages::at(prefix); });
    if (!installed) {
        work.warn(QStringLiteral("It cannot be told whether links were lost: %1").arg(installed.error()));
        co_return QStringList(names);
    }
    QStringList failed;
    for (const QString &text : names) {
        const auto name = PackageName::parse(text);
        if (!name || installed->isLinked(text) || installed->formulaVersions(text).isEmpty())
            continue;
        work.say(QStringLiteral("Linking %1 again").arg(text));
        const auto run = co_await work.session->stream({.arguments = {"link", "--overwrite", *name}},
                                                       work.context, BrewSession::Style::Plain);
        if (run && run->succeeded())
            continue;
        failed.append(text);
        work.warn(QStringLiteral("%1 was linked before and could not be linked again.").arg(text));
    }
    co_return QStringList(failed);
}

/// True if none is left. Else the note holds only those: what is linked now is its owner's to unlink.
Task<bool> settleLinks(QStringList names, CrashNote note, LockedWork work) {
    const QStringList failed = co_await linkAgain(names, work);
    if (failed.isEmpty() || failed.size() == names.size())
        co_return failed.isEmpty();
    if (const auto written = note.update(contentsFor(failed, work.prefix)); !written)
        work.warn(QStringLiteral("The note of what is still to be linked could not be written: ") +
                  written.error());
    co_return false;
}

} // namespace

LostLinks::LostLinks(const InstalledPackages &before, const QString &prefix, const QString &noteFolder)
    : m_names(before.linkedFormulae()) {
    m_names.removeIf([](const QString &name) { return !PackageName::parse(name); }); // no command takes it
    if (m_names.isEmpty())
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
    const QStringList names = m_names;
    const std::optional<CrashNote> note = m_note;
    work.context = work.context.repairing();
    if (!note)
        co_return (co_await linkAgain(names, work)).isEmpty();
    const bool areLinked = co_await settleLinks(names, *note, work);
    if (areLinked)
        note->remove();
    co_return areLinked;
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
