#include "operations/casks/LostApplications.h"

#include "core/async/Worker.h"
#include "operations/casks/CaskUpgradeRepair.h"

#include <QJsonArray>

namespace larkspur {

namespace {

const QString kind = QStringLiteral("cask-upgrades");

QJsonObject contentsFor(const QList<CaskUpgrade> &upgrades, const QString &prefix) {
    QJsonArray list;
    for (const CaskUpgrade &upgrade : upgrades)
        list.append(upgrade.toJson());
    return {{QStringLiteral("prefix"), prefix}, {QStringLiteral("upgrades"), list}};
}

std::optional<QList<CaskUpgrade>> upgradesOf(const QJsonObject &note, const QString &prefix) {
    const QJsonValue list = note.value(QLatin1String("upgrades"));
    if (note.value(QLatin1String("prefix")).toString() != prefix || !list.isArray())
        return std::nullopt;
    QList<CaskUpgrade> upgrades;
    for (const QJsonValue &value : list.toArray()) {
        const auto upgrade = CaskUpgrade::fromJson(value.toObject());
        if (!upgrade)
            return std::nullopt;
        upgrades.append(*upgrade);
    }
    return upgrades;
}

struct Repaired {
    bool hasDoneAnything = false;
    bool isComplete = true;
};

Task<Repaired> repair(QList<CaskUpgrade> upgrades, CaskSetting setting, LockedWork work) {
    const auto steps = co_await runInWorker([upgrades, setting] {
        QList<RepairStep> all;
        for (const CaskUpgrade &upgrade : upgrades)
            all += putRight(upgrade, setting);
        return all;
    });
    Repaired end;
    for (const RepairStep &step : steps) {
        end.hasDoneAnything = true;
        end.isComplete = end.isComplete && step.kind != RepairStep::Kind::Not;
        step.tell(work);
    }
    co_return Repaired(end);
}

} // namespace

LostApplications LostApplications::of(const QStringList &tokens, const CaskSetting &setting) {
    LostApplications lost(setting);
    for (const QString &text : tokens) {
        const auto token = PackageName::parse(text);
        const auto upgrades = token ? CaskUpgrade::of(*token, setting) : QList<CaskUpgrade>();
        if (upgrades)
            lost.m_upgrades += *upgrades;
        else
            lost.m_complaints.append(QStringLiteral("The applications of %1 are not protected from an "
                                                    "interruption of this upgrade: %2")
                                         .arg(text, upgrades.error()));
    }
    if (lost.m_upgrades.isEmpty())
        return lost;
    auto note = CrashNote::write(setting.noteFolder, kind, contentsFor(lost.m_upgrades, setting.prefix));
    if (note)
        lost.m_note = std::move(*note);
    else
        lost.m_complaints.append(QStringLiteral("No note of the casks' applications could be written, so one "
                                                "that is lost if Larkspur is killed now is not put back: %1")
                                     .arg(note.error()));
    return lost;
}

Task<bool> LostApplications::putBack(LockedWork work) const {
    const std::optional<CrashNote> note = m_note;
    const auto end = co_await repair(m_upgrades, m_setting, work);
    if (note && end.isComplete)
        note->remove();
    co_return !end.hasDoneAnything;
}

LostApplicationsLeftover::LostApplicationsLeftover(CaskSetting setting)
    : NoteLeftover({.folder = setting.noteFolder,
                    .kind = kind,
                    .about = QStringLiteral("applications during an upgrade"),
                    .advice = QStringLiteral("If one is missing, Homebrew may have kept it in its Caskroom "
                                             "folder, below a name that ends with %1.")
                                  .arg(CaskUpgrade::backupSuffix)})
    , m_setting(std::move(setting)) {}

Task<NoteLeftover::Settled> LostApplicationsLeftover::settle(CrashNote note, LockedWork work) {
    const auto upgrades = upgradesOf(note.contents(), work.prefix);
    if (!upgrades)
        co_return Settled::Unusable;
    CaskSetting setting = m_setting;
    setting.prefix = work.prefix;
    const auto end = co_await repair(*upgrades, setting, work);
    co_return end.isComplete ? Settled::Done : Settled::Not;
}

} // namespace larkspur
