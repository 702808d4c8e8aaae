#include "ui/screens/ServicesScreen.h"

#include "inventory/state/InventoryState.h"
#include "ui/theme/Colours.h"
#include "ui/widgets/EmptyState.h"

#include <algorithm>

namespace larkspur::ui {

namespace {

QString statusWord(const BrewServiceInfo &service) {
    switch (service.status) {
    case ServiceStatus::Running:
        return QObject::tr("● Running");
    case ServiceStatus::Stopped:
        return QObject::tr("○ Stopped");
    case ServiceStatus::Error:
        return service.exitCode ? QObject::tr("● Error (status %1)").arg(*service.exitCode)
                                : QObject::tr("● Error");
    case ServiceStatus::Scheduled:
        return QObject::tr("● Scheduled");
    case ServiceStatus::None:
        return QObject::tr("○ Not started");
    case ServiceStatus::Unknown:
        break;
    }
    return QObject::tr("○ Unknown");
}

Tone toneOf(ServiceStatus status) {
    if (status == ServiceStatus::Running || status == ServiceStatus::Scheduled)
        return Tone::Good;
    return status == ServiceStatus::Error ? Tone::Bad : Tone::Neutral;
}

} // namespace

ServicesScreen::ServicesScreen(InventoryState &inventory)
    : RecordTableScreen(tr("Services"), tr("Filter services"),
                        {tr("Name"), tr("Status"), tr("Runs as"), tr("File")}, inventory) {}

QList<QList<QStandardItem *>> ServicesScreen::rows() const {
    QList<QList<QStandardItem *>> rows;
    for (const BrewServiceInfo &service : inventory().value().services) {
        auto *status = new QStandardItem(statusWord(service));
        status->setForeground(toneColour(toneOf(service.status), palette()));
        auto *file = new QStandardItem(service.file.value_or(QString()));
        file->setToolTip(file->text());
        rows.append({new QStandardItem(service.name), status,
                     new QStandardItem(service.user.value_or(QString())), file});
    }
    return rows;
}

QString ServicesScreen::subtitle() const {
    const auto &services = inventory().value().services;
    const auto running = std::ranges::count(services, ServiceStatus::Running, &BrewServiceInfo::status);
    return tr("%1 services, %2 running").arg(services.size()).arg(running);
}

void ServicesScreen::showEmptyState(EmptyState *empty) const {
    empty->show(QStringLiteral("services"), tr("No services available"),
                tr("No installed formula brings a background service."));
}

} // namespace larkspur::ui
