#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace sample {

struct Tap {
    QString name;
    bool official = false;
    bool trusted = true;
    QString remote;
};

struct Formula {
    QString name;
    QString tap;
    QString desc;
    QString license;
    QString version;   ///< the newest
    QString installed; ///< what a fresh sample has; empty: nothing
    QStringList dependencies;
    QString caveats;
    QString service;   ///< status in a fresh sample; empty: no service
    QString behaviour; ///< what is special about its upgrade
    int kilobytes = 0;
    int days = 0; ///< age of the installation
    bool dependency = false;
    bool kegOnly = false;
    bool pinned = false;

    QString fullName() const;
};

struct Cask {
    QString token;
    QString tap;
    QStringList names;
    QString app;
    QString desc;
    QString version;
    QString installed;
    QString caveats;
    QString behaviour; ///< what is special about its changes
    int kilobytes = 0;
    int days = 0;
    bool autoUpdates = false;
    bool rosetta = false;

    QString fullToken() const { return token; }
};

/// Every package that the sample Homebrew knows.
struct Catalogue {
    QList<Tap> taps;
    QList<Formula> formulae;
    QList<Cask> casks;

    static Catalogue load();

    const Formula *formula(const QString &name) const;
    const Cask *cask(const QString &token) const;
    const Tap *tap(const QString &name) const;
};

} // namespace sample
