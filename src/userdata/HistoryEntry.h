#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <optional>

namespace larkspur {

enum class HistoryAction { Install, Uninstall, Upgrade, Update };

/// "install" and the like.
QString historyActionName(HistoryAction action);

/// Something that was done with a package, or with Homebrew itself.
struct HistoryEntry {
    QUuid id;
    QDateTime timestamp;
    HistoryAction action = HistoryAction::Install;
    QString packageName;
    bool isCask = false;
    bool success = false;

    QJsonObject toJson() const;
    /// Nothing if a field is missing or of a wrong type.
    static std::optional<HistoryEntry> fromJson(const QJsonObject &json);

    bool operator==(const HistoryEntry &) const = default;
};

} // namespace larkspur
