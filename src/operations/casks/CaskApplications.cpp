#include "operations/casks/CaskApplications.h"

#include "core/files/FolderNames.h"
#include "inventory/refresh/CaskReceipt.h"
#include "operations/casks/ApplicationBundle.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace larkspur {

namespace {

const QLatin1String ending(".app");

/// What Homebrew has recorded of a cask, and where its applications may lie.
struct Record {
    CaskReceipt receipt;
    QStringList folders;

    static std::expected<Record, QString> of(const PackageName &token, const CaskSetting &setting) {
        auto receipt = CaskReceipt::at(caskFolder(token, setting));
        if (!receipt)
            return std::unexpected(receipt.error());
        QStringList folders{receipt->applicationFolder};
        for (const QString &folder : setting.applicationFolders)
            folders.append(QDir::cleanPath(folder));
        folders.removeAll(QString());
        folders.removeDuplicates();
        return Record{*receipt, folders};
    }

    QStringList places() const {
        QStringList places;
        for (const CaskReceipt::Application &application : receipt.applications)
            for (const QString &folder : folders)
                places.append(folder + QLatin1Char('/') + application.name);
        return places;
    }

    bool isPlaceOf(const QString &link, const QString &target) const {
        const QFileInfo place(target);
        return receipt.namesArtifacts ? places().contains(target)
                                      : folders.contains(place.path()) && place.fileName() == link;
    }
};

/// Adds the links of one version that lead to a place of the cask; fails if they cannot be read.
std::expected<void, QString> addLinks(const QDir &staged, const Record &record,
                                      QList<CaskApplication> *found) {
    const auto names = staged.exists() ? namesIn(staged.path()) : QStringList();
    if (!names)
        return std::unexpected(names.error());
    for (const QString &name : *names) {
        const QFileInfo link(staged.filePath(name));
        const QString target = QDir::cleanPath(staged.absoluteFilePath(link.symLinkTarget()));
        if (name.endsWith(ending) && link.isSymLink() && record.isPlaceOf(name, target) &&
            std::ranges::find(*found, target, &CaskApplication::place) == found->end())
            found->append({.place = target, .link = link.filePath()});
    }
    return {};
}

} // namespace

QString caskFolder(const PackageName &token, const CaskSetting &setting) {
    return setting.prefix + QStringLiteral("/Caskroom/") + token.shortName();
}

std::expected<QStringList, QString> caskApplicationPlaces(const PackageName &token,
                                                          const CaskSetting &setting) {
    const auto record = Record::of(token, setting);
    if (!record)
        return std::unexpected(record.error());
    return record->places();
}

std::expected<QList<CaskApplication>, QString> caskApplications(const PackageName &token,
                                                                const CaskSetting &setting) {
    const auto record = Record::of(token, setting);
    const QString home = caskFolder(token, setting);
    const auto versions = namesIn(home);
    if (!record || !versions)
        return std::unexpected(record ? versions.error() : record.error());
    QList<CaskApplication> found;
    for (const QString &version : *versions)
        if (const auto added = addLinks(QDir(home + QLatin1Char('/') + version), *record, &found); !added)
            return std::unexpected(added.error());
    return found;
}

std::expected<bool, QString> isWholeApplication(const QString &place, const PackageName &token,
                                                const CaskSetting &setting) {
    if (!isBundle(place))
        return false;
    const auto linked = caskApplications(token, setting);
    if (!linked)
        return std::unexpected(linked.error());
    return std::ranges::find(*linked, place, &CaskApplication::place) != linked->end();
}

bool isPlausiblePlace(const QString &place, const PackageName &token, const CaskSetting &setting) {
    const auto record = Record::of(token, setting);
    const QStringList folders = record ? record->folders : setting.applicationFolders;
    return folders.contains(QFileInfo(place).path()) && place.endsWith(ending) &&
           QDir::cleanPath(place) == place;
}

} // namespace larkspur
