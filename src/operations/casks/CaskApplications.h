#pragma once

#include "core/brew/PackageName.h"
#include "operations/casks/CaskSetting.h"

#include <QList>
#include <QStringList>

#include <expected>

namespace larkspur {

/// Where Homebrew keeps what it knows of a cask.
QString caskFolder(const PackageName &token, const CaskSetting &setting);

/// An application that Homebrew has installed for a cask.
struct CaskApplication {
    QString place; ///< where it is used from
    QString link;  ///< in the Caskroom: Homebrew's, which leads to the place once the application is whole
};

/// Where the applications of an installed cask belong: named by Homebrew's own receipt, in an application
/// folder, and what Homebrew's link in the Caskroom leads to. The vendor's archive, which is unpacked into
/// the Caskroom too, cannot make anything else count. Where the receipt, an old one, does not tell what the
/// cask has, its name is that of the link. Each place once. The error is one line of text: Homebrew's records
/// are there and cannot be read. Blocking.
std::expected<QList<CaskApplication>, QString> caskApplications(const PackageName &token,
                                                                const CaskSetting &setting);

/// The same without the links: where the applications of the cask may lie at all, in the folder that Homebrew
/// has recorded for this cask or in one of the setting.
std::expected<QStringList, QString> caskApplicationPlaces(const PackageName &token,
                                                          const CaskSetting &setting);

/// Whether it is a bundle that Homebrew has come to the end with. The error is one line of text: this cannot
/// be told. Blocking.
std::expected<bool, QString> isWholeApplication(const QString &place, const PackageName &token,
                                                const CaskSetting &setting);

/// Whether a place that a note names can be meant: an application folder of this cask, as far as Homebrew's
/// records can be read, and a plain name. Blocking.
bool isPlausiblePlace(const QString &place, const PackageName &token, const CaskSetting &setting);

} // namespace larkspur
