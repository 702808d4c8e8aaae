#pragma once

#include <QString>

#include <optional>

namespace larkspur {

enum class ServiceStatus { Running, Stopped, Error, Unknown, Scheduled, None };

/// Homebrew's word for a status as ours; a word that is not known is `Unknown`.
ServiceStatus serviceStatusFromText(const QString &text);
QString serviceStatusName(ServiceStatus status);

/// One background service that Homebrew can control.
struct BrewServiceInfo {
    QString name;
    ServiceStatus status = ServiceStatus::Unknown;
    std::optional<QString> user; ///< account it runs as
    std::optional<QString> file; ///< its unit or property list
    std::optional<qint64> exitCode;

    bool operator==(const BrewServiceInfo &) const = default;
};

} // namespace larkspur
