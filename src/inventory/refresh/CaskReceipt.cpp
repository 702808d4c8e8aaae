#include "inventory/refresh/CaskReceipt.h"

#include "core/files/WholeFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace larkspur {

namespace {

QString metadataPath(const QString &home, const char *file) {
    return home + QStringLiteral("/.metadata/") + QLatin1String(file);
}

/// An empty object if there is none.
std::expected<QByteArray, QString> metadata(const QString &home, const char *file) {
    constexpr qint64 largest = 16 * 1024 * 1024; // bytes
    const auto text = readWholeFile(metadataPath(home, file), largest);
    if (!text && !text.error().isMissing)
        return std::unexpected(text.error().reason);
    return text ? *text : QByteArrayLiteral("{}");
}

/// An artifact that is an application: the last word names it, or a target that it is renamed to.
std::optional<CaskReceipt::Application> applicationIn(const QJsonObject &artifact) {
    QString word;
    const auto take = [&word](const QString &text) { word = text.isEmpty() ? word : text; };
    for (const QJsonValue &value : artifact.value(QLatin1String("app")).toArray())
        take(value.isObject() ? value.toObject().value(QLatin1String("target")).toString()
                              : value.toString());
    if (!word.isEmpty())
        take(artifact.value(QLatin1String("target")).toString());
    const QString name = word.section(QLatin1Char('/'), -1);
    if (!name.endsWith(QLatin1String(".app")) || name.startsWith(QLatin1Char('.')))
        return std::nullopt;
    return CaskReceipt::Application{.name = name,
                                    .place = QDir::isAbsolutePath(word) ? QDir::cleanPath(word) : QString()};
}

QString recordedFolder(const QJsonObject &config) {
    for (const char *source : {"explicit", "env", "default"}) {
        QString folder =
            config.value(QLatin1String(source)).toObject().value(QLatin1String("appdir")).toString();
        if (folder.startsWith(QLatin1String("~/")))
            folder.replace(0, 1, QDir::homePath());
        if (QDir::isAbsolutePath(folder))
            return QDir::cleanPath(folder);
    }
    return {};
}

} // namespace

std::expected<CaskReceipt, QString> CaskReceipt::at(const QString &home) {
    const auto text = metadata(home, "INSTALL_RECEIPT.json");
    const auto config = metadata(home, "config.json");
    if (!text || !config)
        return std::unexpected(text ? config.error() : text.error());
    const QJsonDocument document = QJsonDocument::fromJson(*text);
    if (!document.isObject())
        return std::unexpected(
            QStringLiteral("%1 is damaged").arg(metadataPath(home, "INSTALL_RECEIPT.json")));
    const QJsonObject receipt = document.object();
    CaskReceipt found;
    found.applicationFolder = recordedFolder(QJsonDocument::fromJson(*config).object());
    const QJsonArray artifacts = receipt.value(QLatin1String("uninstall_artifacts")).toArray();
    found.namesArtifacts = !artifacts.isEmpty();
    for (const QJsonValue &artifact : artifacts)
        if (const auto application = applicationIn(artifact.toObject()))
            found.applications.append(*application);
    if (const qint64 time = receipt.value(QLatin1String("time")).toInteger(); time > 0)
        found.installedOn = QDateTime::fromSecsSinceEpoch(time, Qt::UTC);
    return found;
}

} // namespace larkspur
