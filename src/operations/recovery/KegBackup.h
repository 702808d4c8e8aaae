#pragma once

#include "operations/installed/InstalledPackages.h"

namespace larkspur {

/// A keg that Homebrew has moved aside to reinstall its formula, and what is known of that formula.
struct KegBackup {
    QString prefix;
    QString formula;
    QString version;
    QStringList newer = {};  ///< versions in the Cellar that Homebrew would take for newer
    bool isReplaced = false; ///< a keg is linked: Homebrew takes the links away first and makes them last
    bool wasLinked = false;  ///< known to have been linked before

    static QList<KegBackup> all(const QString &prefix, const InstalledPackages &installed);

    QString rack() const { return prefix + QStringLiteral("/Cellar/") + formula; }
    QString keg() const { return rack() + QLatin1Char('/') + version; }
    QString path() const { return keg() + InstalledPackages::backupSuffix; }
};

/// What was done about one, in one line of text.
struct SettledBackup {
    QString line;
    bool isBack = false; ///< the old keg has its place again, without links
};
/// Ends the reinstallation, or undoes it as Homebrew does when one fails. Nothing is lost that the keg from
/// before does not hold. Blocking. The error is one line of text that says what stays, and why.
std::expected<SettledBackup, QString> settle(const KegBackup &backup);

} // namespace larkspur
