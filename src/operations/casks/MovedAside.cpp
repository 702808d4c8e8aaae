#include "operations/casks/MovedAside.h"

#include "core/files/Trash.h"
#include "operations/casks/ApplicationBundle.h"
#include "operations/casks/CaskApplications.h"
#include "operations/casks/CaskOutcome.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QUuid>

#include <algorithm>
#include <ranges>

namespace larkspur {

namespace {

/// Beside the application, so that moving it is a renaming, and unlike any other.
QString asidePath(const QString &application) {
    const QFileInfo info(application);
    return info.path() + QLatin1Char('/') + MovedAside::namePrefix +
           QUuid::createUuid().toString(QUuid::Id128).left(8) + QLatin1Char('-') + info.fileName();
}

} // namespace

MovedAside::MovedAside(CaskSetting setting, const PackageName &token)
    : m_setting(std::move(setting))
    , m_token(token) {
    const auto applications = caskApplications(token, m_setting);
    if (!applications)
        m_warnings.append(QStringLiteral("Warning: The applications of %1 cannot be moved aside, and a "
                                         "reinstallation that fails may remove them: %2")
                              .arg(m_token.text(), applications.error()));
    for (const CaskApplication &application : applications.value_or(QList<CaskApplication>()))
        if (isBundle(application.place))
            m_applications.append({application.place, asidePath(application.place)});
}

std::expected<std::unique_ptr<MovedAside>, QString> MovedAside::begin(CaskSetting setting,
                                                                      const PackageName &token) {
    std::unique_ptr<MovedAside> aside(new MovedAside(std::move(setting), token));
    if (aside->m_applications.isEmpty())
        return aside;
    // Noted first: an application that is moved without a note would be lost to a crash.
    auto note = CrashNote::write(aside->m_setting.noteFolder, noteKind, aside->noteContents(Fate::Open));
    if (!note) {
        aside->m_applications.clear();
        return std::unexpected(note.error());
    }
    aside->m_note = *note;
    aside->m_applications.removeIf([&aside](const Application &application) {
        if (moveToFreePlace(application.place, application.aside))
            return false;
        aside->m_warnings.append(
            QStringLiteral("Warning: %1 cannot be moved aside: a reinstallation that fails may remove it.")
                .arg(application.place));
        return true;
    });
    if (aside->m_applications.isEmpty())
        aside->m_note->remove();
    return aside;
}

MovedAside::~MovedAside() {
    conclude(false);
}

QJsonObject MovedAside::noteContents(Fate fate) const {
    QJsonArray applications;
    for (const Application &application : m_applications)
        applications.append(QJsonObject{{QStringLiteral("place"), application.place},
                                        {QStringLiteral("aside"), application.aside}});
    return {{QStringLiteral("prefix"), m_setting.prefix},
            {QStringLiteral("token"), m_token.text()},
            {QStringLiteral("applications"), applications},
            {QStringLiteral("isReplaced"), fate == Fate::Replaced}};
}

QStringList MovedAside::makeRoom() const {
    QStringList lines;
    for (const QString &place : m_applications | std::views::transform(&Application::place)) {
        if (!isOccupied(place) || isWholeApplication(place, m_token, m_setting).value_or(true))
            continue;
        if (const auto taken = throwAway(place, *m_setting.trash); !taken)
            lines.append(QStringLiteral("Warning: %1 is in the way of the next attempt: %2")
                             .arg(place, taken.error()));
    }
    return lines;
}

QStringList MovedAside::discard() {
    QStringList lines;
    // From here on the old ones are not to come back, whatever happens.
    bool isComplete = m_note->update(noteContents(Fate::Replaced)).has_value();
    for (const Application &application : std::exchange(m_applications, {}))
        isComplete = discardOne(application, &lines) && isComplete;
    if (isComplete)
        m_note->remove();
    return lines;
}

/// False if the old application stays aside.
bool MovedAside::discardOne(const Application &application, QStringList *lines) const {
    const auto taken = throwAway(application.aside, *m_setting.trash);
    if (!taken)
        lines->append(QStringLiteral("Warning: The old %1 is kept at %2: %3")
                          .arg(QFileInfo(application.place).fileName(), application.aside, taken.error()));
    return taken.has_value();
}

MovedAside::Conclusion MovedAside::conclude(bool isReported) {
    Conclusion end;
    if (m_applications.isEmpty())
        return end;
    QList<std::expected<bool, QString>> judgements;
    for (const Application &application : m_applications)
        judgements.append(isReplaced(application.place, m_token, m_setting));
    if (std::ranges::all_of(judgements, [](const auto &isNew) { return isNew.value_or(false); })) {
        end.lines = discard();
        return end;
    }
    // The note stays as it is: whoever finds it after a crash judges each in the same way.
    bool isComplete = true;
    const QList<Application> applications = std::exchange(m_applications, {});
    for (qsizetype i = 0; i < applications.size(); ++i)
        isComplete = concludeOne(applications[i], judgements[i], isReported, &end) && isComplete;
    if (isComplete)
        m_note->remove(); // else the next operation tries again
    if (const auto complaint = complaintIfForgotten(m_token, m_setting))
        end.lines.append(QStringLiteral("Warning: ") + *complaint);
    return end;
}

/// False if the application stays aside.
bool MovedAside::concludeOne(const Application &application, const std::expected<bool, QString> &isNew,
                             bool isReported, Conclusion *end) const {
    if (!isNew) {
        end->lines.append(QStringLiteral("Warning: It cannot be told whether %1 is whole, so the one "
                                         "from before is kept at %2: %3")
                              .arg(application.place, application.aside, isNew.error()));
        return false;
    }
    if (*isNew)
        return discardOne(application, &end->lines);
    const QString flaw = isOccupied(application.place) ? QStringLiteral("whole") : QStringLiteral("there");
    const auto returned = returnToPlace(application.place, application.aside, *m_setting.trash);
    if (!returned)
        end->lines.append(QStringLiteral("Warning: %1").arg(returned.error()));
    if (isReported) {
        const QString what =
            QStringLiteral("Error: Homebrew reported success, but %1 is not %2").arg(application.place, flaw);
        end->errors.append(returned ? what + QStringLiteral("; the application from before is back") : what);
    } else if (returned) {
        end->lines.append(QStringLiteral("Put %1 back as it was before.").arg(application.place));
    }
    return returned.has_value();
}

} // namespace larkspur
