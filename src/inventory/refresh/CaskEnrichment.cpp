#include "inventory/refresh/CaskEnrichment.h"

#include "core/async/Worker.h"
#include "inventory/refresh/InfoPlist.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace larkspur {

namespace {

QJsonObject readObject(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

/// The folder that the cask's applications went to: recorded options count before the environment's, those
/// before the defaults.
QString recordedAppFolder(const QString &caskFolder) {
    const QJsonObject config = readObject(caskFolder + QStringLiteral("/.metadata/config.json"));
    for (const char *level : {"explicit", "env", "default"}) {
        const QString folder =
            config.value(QLatin1String(level)).toObject().value(QLatin1String("appdir")).toString();
        if (folder.startsWith(QLatin1String("~/")))
            return QDir::homePath() + folder.mid(1);
        if (!folder.isEmpty())
            return folder;
    }
    return {};
}

/// Paths of bundles, as far as the receipt names them: absolute targets where it has them, else names in
/// `folder`.
QStringList bundlesInReceipt(const QJsonObject &receipt, const QString &folder) {
    QStringList paths;
    for (const QJsonValue &artifact : receipt.value(QLatin1String("uninstall_artifacts")).toArray()) {
        const QJsonObject entry = artifact.toObject();
        QString name;
        for (const QJsonValue &element : entry.value(QLatin1String("app")).toArray())
            name = element.isString() ? element.toString()
                                      : element.toObject().value(QLatin1String("target")).toString(name);
        QString target = entry.value(QLatin1String("target")).toString();
        if (target.isEmpty())
            target = name;
        if (!target.endsWith(QLatin1String(".app")))
            continue;
        if (QDir::isAbsolutePath(target))
            paths.append(target);
        else if (!folder.isEmpty())
            paths.append(folder + QLatin1Char('/') + target);
    }
    return paths;
}

} // namespace

CaskFacts readCaskFacts(const QString &caskroom, const Cask &cask, const QStringList &applicationFolders) {
    CaskFacts facts;
    const QString caskFolder = caskroom + QLatin1Char('/') + cask.token;
    const QJsonObject receipt = readObject(caskFolder + QStringLiteral("/.metadata/INSTALL_RECEIPT.json"));
    if (const qint64 time = receipt.value(QLatin1String("time")).toInteger(); time > 0)
        facts.installedOn = QDateTime::fromSecsSinceEpoch(time, Qt::UTC);

    const QString recorded = recordedAppFolder(caskFolder);
    QStringList candidates = bundlesInReceipt(receipt, recorded);
    for (const QString &folder : QStringList{recorded} + applicationFolders)
        for (const QString &name : cask.appNames)
            if (!folder.isEmpty())
                candidates.append(folder + QLatin1Char('/') + name);
    for (const QString &bundle : std::as_const(candidates)) {
        const auto info = readInfoPlist(bundle + QStringLiteral("/Contents/Info.plist"));
        if (!info)
            continue;
        facts.actualVersion = info->shortVersion;
        facts.actualBuild = info->buildVersion;
        break;
    }
    return facts;
}

CaskEnrichment::CaskEnrichment(QStringList applicationFolders)
    : m_applicationFolders(std::move(applicationFolders)) {}

Task<QHash<QString, CaskFacts>> CaskEnrichment::read(QString brewPrefix, QList<Cask> casks) {
    co_return co_await runInWorker(
        [caskroom = brewPrefix + QStringLiteral("/Caskroom"), casks, folders = m_applicationFolders] {
            QHash<QString, CaskFacts> facts;
            for (const Cask &cask : casks)
                facts.insert(cask.token, readCaskFacts(caskroom, cask, folders));
            return facts;
        });
}

} // namespace larkspur
