#include "operations/recovery/NoteLeftover.h"

#include "core/log/Logger.h"

#include <algorithm>

namespace larkspur {

namespace {

/// Notes of before this was kept say nothing.
bool isOfAnother(const CrashNote &note, const QString &prefix) {
    const QString own = note.contents().value(QLatin1String("prefix")).toString();
    return !own.isEmpty() && own != prefix;
}

} // namespace

bool NoteLeftover::exists(const QString &) const {
    return CrashNote::anyStanding(m_notes.folder, m_notes.kind);
}

bool NoteLeftover::concerns(const QString &prefix) const {
    const CrashNote::Standing standing = CrashNote::standing(m_notes.folder, m_notes.kind);
    return !standing.failures.isEmpty() || !standing.unreadable.isEmpty() ||
           std::ranges::any_of(standing.readable,
                               [&](const CrashNote &note) { return !isOfAnother(note, prefix); });
}

Task<> NoteLeftover::putRight(LockedWork work) {
    const CrashNote::Standing standing = CrashNote::standing(m_notes.folder, m_notes.kind);
    for (const CrashNote &note : standing.readable) {
        if (isOfAnother(note, work.prefix)) {
            work.logger->warn(QStringLiteral("[Larkspur] %1 is about another Homebrew").arg(note.path()));
            continue;
        }
        const Settled settled = co_await settle(note, work);
        if (settled == Settled::Done)
            note.remove();
        else if (settled == Settled::Unusable)
            keepUnusable(note, work);
    }
    for (const QString &failure : standing.failures)
        work.warn(QStringLiteral("A note about %1 may be there and cannot be read; it stays: %2")
                      .arg(m_notes.about, failure));
    for (const CrashNote &note : standing.unreadable)
        keepUnusable(note, work);
}

void NoteLeftover::keepUnusable(const CrashNote &note, const LockedWork &work) const {
    const auto aside = note.setAside();
    const QString where = aside ? QStringLiteral("it is kept as %1").arg(*aside)
                                : QStringLiteral("it still lies at %1 (%2)").arg(note.path(), aside.error());
    work.warn(QStringLiteral("A note about %1 cannot be used; %2. %3")
                  .arg(m_notes.about, where, m_notes.advice)
                  .trimmed());
}

} // namespace larkspur
