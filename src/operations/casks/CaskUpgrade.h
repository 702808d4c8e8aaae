#pragma once

#include "core/brew/PackageName.h"
#include "operations/casks/CaskSetting.h"

#include <QJsonObject>
#include <QList>
#include <QStringList>

#include <expected>
#include <optional>

namespace larkspur {

/// A cask as it was before an upgrade, which Homebrew does in this order: it copies each application into the
/// version's folder in the Caskroom, in place of its link, and empties the old place; gives that folder the
/// ending ".upgrading"; fills the place from the new version's folder and links there; removes the old
/// folder. Cut off in between it leaves an application that is half or not there, and nobody returns it.
struct CaskUpgrade {
    /// What Homebrew adds to the name of the old folder while it installs the new version.
    static constexpr QLatin1String backupSuffix{".upgrading"};

    struct Application {
        QString name;  ///< of its link in the version's folder
        QString place; ///< absolute
    };
    PackageName token;
    QString version;
    QStringList versions; ///< all that were there
    QList<Application> applications;
    QString options; ///< tells whether Homebrew has written the options of an installation since

    /// What an upgrade of the cask could lose; nothing where none of its applications is in place. The error
    /// is one line of text: it cannot be told. Blocking.
    static std::expected<QList<CaskUpgrade>, QString> of(const PackageName &token,
                                                         const CaskSetting &setting);

    /// A new one for each time that Homebrew has written the options into the cask's folder. Blocking.
    static QString optionsRecord(const QString &home);

    QJsonObject toJson() const;
    /// Nothing unless each field is there and of its type, and each name a plain one.
    static std::optional<CaskUpgrade> fromJson(const QJsonObject &object);
};

} // namespace larkspur
