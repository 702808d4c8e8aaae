#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <optional>
#include <variant>

namespace larkspur {

enum class SnoozeDuration { OneDay, OneWeek, OneMonth };

/// A month is thirty days.
std::chrono::seconds lengthOf(SnoozeDuration duration);

/// Until another version than the snoozed one is offered: the version is skipped.
struct UntilNextVersion {
    bool operator==(const UntilNextVersion &) const = default;
};

using SnoozeType = std::variant<SnoozeDuration, UntilNextVersion>;

/// An update that the person does not want to see for a while.
struct SnoozedPackage {
    QUuid id;
    QString packageName;    ///< short name
    QString snoozedVersion; ///< the one that was offered
    SnoozeType snoozeType;
    QDateTime snoozedAt;
    bool isCask = false;

    bool isInForce(const QString &offeredVersion, const QDateTime &now) const;
    /// When it ends, in words: "Expires in 6 days", "Until version after 2.0".
    QString description(const QDateTime &now) const;

    QJsonObject toJson() const;
    /// Nothing if a field is missing or of a wrong type.
    static std::optional<SnoozedPackage> fromJson(const QJsonObject &json);

    bool operator==(const SnoozedPackage &) const = default;
};

} // namespace larkspur
