#include "inventory/refresh/CaskEnrichment.h"

#include "core/async/Worker.h"
#include "inventory/refresh/CaskReceipt.h"
#include "inventory/refresh/InfoPlist.h"

namespace larkspur {

CaskFacts readCaskFacts(const QString &caskroom, const Cask &cask, const QStringList &applicationFolders) {
    const CaskReceipt receipt =
        CaskReceipt::at(caskroom + QLatin1Char('/') + cask.token).value_or(CaskReceipt());
    const QString &recorded = receipt.applicationFolder;
    QStringList candidates;
    for (const auto &[name, place] : receipt.applications)
        if (!place.isEmpty() || !recorded.isEmpty())
            candidates.append(place.isEmpty() ? recorded + QLatin1Char('/') + name : place);
    for (const QString &folder : QStringList{recorded} + applicationFolders)
        for (const QString &name : cask.appNames)
            if (!folder.isEmpty())
                candidates.append(folder + QLatin1Char('/') + name);
    CaskFacts facts;
    facts.installedOn = receipt.installedOn;
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
