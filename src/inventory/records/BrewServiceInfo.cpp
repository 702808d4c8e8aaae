#include "inventory/records/BrewServiceInfo.h"

#include <QHash>

namespace larkspur {

ServiceStatus serviceStatusFromText(const QString &text) {
    static const QHash<QString, ServiceStatus> words{{QStringLiteral("started"), ServiceStatus::Running},
                                                     {QStringLiteral("stopped"), ServiceStatus::Stopped},
                                                     {QStringLiteral("error"), ServiceStatus::Error},
                                                     {QStringLiteral("scheduled"), ServiceStatus::Scheduled},
                                                     {QStringLiteral("none"), ServiceStatus::None}};
    return words.value(text, ServiceStatus::Unknown);
}

QString serviceStatusName(ServiceStatus status) {
    switch (status) {
    case ServiceStatus::Running:
        return QStringLiteral("running");
    case ServiceStatus::Stopped:
        return QStringLiteral("stopped");
    case ServiceStatus::Error:
        return QStringLiteral("error");
    case ServiceStatus::Scheduled:
        return QStringLiteral("scheduled");
    case ServiceStatus::None:
        return QStringLiteral("none");
    case ServiceStatus::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

} // namespace larkspur
