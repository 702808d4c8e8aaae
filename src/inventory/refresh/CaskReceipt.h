#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

#include <expected>
#include <optional>

namespace larkspur {

/// What Homebrew has recorded on the disk of a cask that it installed.
struct CaskReceipt {
    struct Application {
        QString name;       ///< of the bundle, as it is installed: plain, ends with ".app"
        QString place = {}; ///< where it is, if the receipt says so; absolute
    };
    QList<Application> applications;
    /// Whether it tells what belongs to the cask, applications or not. Old ones do not.
    bool namesArtifacts = false;
    /// Where it puts applications: the recorded options count before the environment's, those before the
    /// defaults. Absolute; empty if nothing usable is recorded.
    QString applicationFolder;
    std::optional<QDateTime> installedOn;

    /// `home`: the cask's folder in the Caskroom. Records that are missing say nothing; one that cannot be
    /// read, and a damaged receipt, is the error, one line of text. Blocking.
    static std::expected<CaskReceipt, QString> at(const QString &home);
};

} // namespace larkspur
