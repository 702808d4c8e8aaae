#include "operations/casks/MovedAsideLeftover.h"

#include "core/async/Worker.h"
#include "core/files/FolderNames.h"
#include "operations/casks/ApplicationBundle.h"
#include "operations/casks/CaskApplications.h"
#include "operations/casks/CaskOutcome.h"
#include "operations/casks/MovedAside.h"
#include "operations/casks/RepairStep.h"

#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>

namespace larkspur {

namespace {

/// Whether what lies in the folder can be looked up.
bool isAccessible(const QString &folder) {
    const QFileInfo info(folder);
    return info.isReadable() && info.isExecutable();
}

bool isAsidePathOf(const QString &aside, const QString &application) {
    const QFileInfo info(aside);
    return info.path() == QFileInfo(application).path() &&
           info.fileName().startsWith(MovedAside::namePrefix) &&
           info.fileName().endsWith(QLatin1Char('-') + QFileInfo(application).fileName());
}

/// One application of a note.
struct Stray {
    PackageName token;
    QString place;
    QString aside;
    bool isReplaced;
};

/// Nothing stands aside: it was never moved, or is back already, unless its folder cannot be looked into.
std::expected<void, QString> checkNothingIsAside(const Stray &stray) {
    if (isBundle(stray.place) && !isOccupied(stray.aside))
        return {};
    const QString folder = QFileInfo(stray.aside).path();
    const auto names = namesIn(folder);
    const QString reason = !QFileInfo(folder).isDir() ? folder + QStringLiteral(" is not there now")
                           : !names                   ? names.error()
                           : !isAccessible(folder)    ? folder + QStringLiteral(" cannot be read")
                           : isOccupied(stray.aside)  ? stray.aside + QStringLiteral(" is no application")
                                                      : QString();
    if (reason.isEmpty())
        return {};
    return std::unexpected(QStringLiteral("It cannot be told what became of %1, which was moved aside: %2")
                               .arg(stray.place, reason));
}

RepairStep settleOne(const Stray &stray, const CaskSetting &setting) {
    if (!isPlausiblePlace(stray.place, stray.token, setting) || !isAsidePathOf(stray.aside, stray.place))
        return RepairStep::failed(
            QStringLiteral("%1 is left where it is: it does not look like an application of %2")
                .arg(stray.aside, stray.token.text()));
    const auto isNew = stray.isReplaced && isBundle(stray.place)
                           ? std::expected<bool, QString>(true)
                           : isReplaced(stray.place, stray.token, setting);
    if (!isNew)
        return RepairStep::failed(QStringLiteral("It cannot be told whether %1 is whole after an interrupted "
                                                 "reinstallation, so the one from before is kept at %2: %3")
                                      .arg(stray.place, stray.aside, isNew.error()));
    const auto done = *isNew ? throwAway(stray.aside, *setting.trash)
                             : returnToPlace(stray.place, stray.aside, *setting.trash);
    if (!done)
        return RepairStep::failed(done.error());
    return RepairStep::done(
        (*isNew ? QStringLiteral("Moved %1 from before an interrupted reinstallation to the trash.")
                : QStringLiteral("Put %1 back after an interrupted reinstallation."))
            .arg(stray.place));
}

/// The applications of a note; nothing unless each of its fields is there and of its type.
std::optional<QList<Stray>> straysOf(const QJsonObject &note, const QString &prefix) {
    const auto token = PackageName::parse(note.value(QLatin1String("token")).toString());
    const QJsonValue applications = note.value(QLatin1String("applications"));
    const QJsonValue isReplaced = note.value(QLatin1String("isReplaced"));
    if (!token || note.value(QLatin1String("prefix")).toString() != prefix || !applications.isArray() ||
        !isReplaced.isBool())
        return std::nullopt;
    QList<Stray> strays;
    for (const QJsonValue &value : applications.toArray()) {
        strays.append({.token = *token,
                       .place = value.toObject().value(QLatin1String("place")).toString(),
                       .aside = value.toObject().value(QLatin1String("aside")).toString(),
                       .isReplaced = isReplaced.toBool()});
        if (strays.last().place.isEmpty() || strays.last().aside.isEmpty())
            return std::nullopt;
    }
    return strays;
}

QList<RepairStep> settleAll(const QList<Stray> &strays, const CaskSetting &setting) {
    QList<RepairStep> steps;
    for (const Stray &stray : strays) {
        if (isBundle(stray.aside))
            steps.append(settleOne(stray, setting));
        else if (const auto checked = checkNothingIsAside(stray); !checked)
            steps.append(RepairStep::failed(checked.error()));
    }
    const auto isDone = [](const RepairStep &step) { return step.kind == RepairStep::Kind::Done; };
    if (std::ranges::any_of(steps, isDone))
        if (const auto complaint = complaintIfForgotten(strays.first().token, setting))
            steps.append(RepairStep::left(*complaint));
    return steps;
}

} // namespace

MovedAsideLeftover::MovedAsideLeftover(CaskSetting setting)
    : NoteLeftover({.folder = setting.noteFolder,
                    .kind = MovedAside::noteKind,
                    .about = QStringLiteral("an application that was moved aside"),
                    .advice = QStringLiteral("The application lies beside its old place, its name beginning "
                                             "with %1.")
                                  .arg(MovedAside::namePrefix)})
    , m_setting(std::move(setting)) {}

/// Only what could be an application of this cask, beside its place, is moved.
Task<NoteLeftover::Settled> MovedAsideLeftover::settle(CrashNote note, LockedWork work) {
    const auto strays = straysOf(note.contents(), work.prefix);
    if (!strays)
        co_return Settled::Unusable;
    CaskSetting setting = m_setting;
    setting.prefix = work.prefix;
    const QList<RepairStep> steps =
        co_await runInWorker([all = *strays, setting] { return settleAll(all, setting); });
    Settled settled = Settled::Done;
    for (const RepairStep &step : steps) {
        step.tell(work);
        if (step.kind == RepairStep::Kind::Not)
            settled = Settled::Not;
    }
    co_return Settled(settled);
}

} // namespace larkspur
