#include "operations/package/HeldPin.h"

#include "core/brew/PackageName.h"
#include "core/files/AtomicFile.h"
#include "core/log/Logger.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace larkspur {

HeldPin::HeldPin(PackageRun::Setting setting, QString noteFile, PackageTarget package)
    : m_setting(std::move(setting))
    , m_noteFile(std::move(noteFile))
    , m_package(std::move(package)) {}

Task<Result<PackageEnd>> HeldPin::takeOff() {
    const QJsonObject note{{QStringLiteral("name"), m_package.name},
                           {QStringLiteral("isCask"), m_package.isCask}};
    // Without the note a crash loses the pin; the upgrade was wanted all the same.
    if (const auto written = writeFileAtomically(m_noteFile, QJsonDocument(note).toJson()); !written)
        m_setting.logger->warn(QStringLiteral("[Larkspur] ") + written.error());
    PackageRun unpinning(m_setting, {.kind = OperationKind::Unpin}, m_package);
    co_return co_await unpinning.run();
}

Task<bool> HeldPin::putBack() {
    PackageRun::Setting unstoppable = m_setting;
    unstoppable.context.stop = {};
    PackageRun pinning(unstoppable, {.kind = OperationKind::Pin}, m_package);
    const auto pinned = co_await pinning.run();
    if (pinned)
        QFile::remove(m_noteFile);
    co_return pinned && *pinned == PackageEnd::Done;
}

bool HeldPin::hasLeftover(const QString &noteFile) {
    return QFile::exists(noteFile);
}

Task<> HeldPin::recover(QString noteFile, PackageRun::Setting setting) {
    QFile file(noteFile);
    if (!file.open(QIODevice::ReadOnly))
        co_return;
    const QJsonObject note = QJsonDocument::fromJson(file.readAll()).object();
    const PackageTarget package{.name = note.value(QLatin1String("name")).toString(),
                                .isCask = note.value(QLatin1String("isCask")).toBool()};
    if (!isValidPackageName(package.name)) {
        file.remove();
        co_return;
    }
    setting.logger->info(
        QStringLiteral("[Larkspur] Pinning %1 again, as it was before an upgrade that was cut off")
            .arg(package.name));
    HeldPin held(std::move(setting), noteFile, package);
    if (!co_await held.putBack())
        held.m_setting.logger->warn(
            QStringLiteral("[Larkspur] %1 could not be pinned again").arg(package.name));
}

} // namespace larkspur
