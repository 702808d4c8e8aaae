#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace larkspur {

/// What must be known to finish or undo a rollback: how the formula was before, and how far it has come.
struct RollbackNote {
    enum class Phase {
        Preparing, ///< nothing installed has been touched
        Exchanging ///< what was installed lies aside, whole
    };
    QString prefix;
    QString formula; ///< short name
    QString version;
    QString previousVersion = {}; ///< empty: nothing was installed
    bool wasLinked = false;
    bool wasPinned = false;
    bool isOnRequest = false;
    Phase phase = Phase::Preparing;

    bool isFirstInstallation() const { return previousVersion.isEmpty(); }
    QString rack() const { return prefix + QStringLiteral("/Cellar/") + formula; }
    QString keg() const { return rack() + QLatin1Char('/') + version; }
    /// On the volume of the Cellar, so that moving is renaming.
    QString workFolder() const { return prefix + QStringLiteral("/var/larkspur/rollback/") + formula; }
    QString staged() const { return workFolder() + QStringLiteral("/target"); }
    QString aside() const { return workFolder() + QStringLiteral("/before"); }

    QJsonObject toJson() const;
    /// Nothing unless every field is there and of its type, and every path that follows from it stays inside
    /// `prefix`, the one that is driven now.
    static std::optional<RollbackNote> fromJson(const QJsonObject &json, const QString &prefix);
};

} // namespace larkspur
