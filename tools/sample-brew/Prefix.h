#pragma once

#include "Catalogue.h"

#include <QDateTime>
#include <QJsonObject>

#include <optional>

namespace sample {

/// The sample's files: a Cellar, a Caskroom, links, pins and application bundles, laid out as Homebrew lays
/// them out.
class Prefix {
  public:
    explicit Prefix(QString path);

    QString path() const { return m_path; }
    QString cellar() const { return m_path + QStringLiteral("/Cellar"); }
    QString caskroom() const { return m_path + QStringLiteral("/Caskroom"); }
    QString applications() const;
    QString keg(const Formula &formula, const QString &version) const;

    /// Installed versions, oldest first.
    QStringList versions(const Formula &formula) const;
    QString linkedVersion(const Formula &formula) const;
    QJsonObject receipt(const Formula &formula, const QString &version) const;
    /// Writes the files of a keg and links it in place of any other.
    void installKeg(const Formula &formula, const QString &version, bool onRequest, const QDateTime &when);
    void removeKeg(const Formula &formula, const QString &version);
    void link(const Formula &formula, const QString &version);
    /// Takes the links of its programs away, its record last; the link in opt stays.
    void unlink(const Formula &formula);

    /// The steps of a reinstallation: the keg in use stands aside without links until the new one is linked.
    void backUpKeg(const Formula &formula);
    void purgeKegBackup(const Formula &formula);

    QString installedVersion(const Cask &cask) const;
    QString appPath(const Cask &cask) const;
    QJsonObject receipt(const Cask &cask) const;
    void installCask(const Cask &cask, const QString &version, const QDateTime &when);
    void removeCask(const Cask &cask);

    /// The steps of an upgrade, in Homebrew's order. First what is there goes into the Caskroom, the folder
    /// of the bundle stays, empty;
    void backUpCask(const Cask &cask);
    /// then either what was backed up is removed, with the new version in place;
    void purgeBackup(const Cask &cask);
    /// or all is as before the upgrade.
    void restoreBackup(const Cask &cask);
    /// Version that the bundle itself states; empty without a bundle.
    QString bundleVersion(const Cask &cask) const;

    bool isPinned(const QString &name, bool isCask) const;
    void pin(const QString &name, bool isCask);
    void unpin(const QString &name, bool isCask);

    /// Small state of the sample: service statuses and the like.
    QJsonObject state() const;
    void setState(const QJsonObject &state) const;

    /// Number of files below a folder and their size, as Homebrew prints it: "12 files, 1.2MB".
    static QString sizeText(const QString &folder);

  private:
    void placeBundle(const Cask &cask, const QString &staged);
    QString pinPath(const QString &name, bool isCask) const;

    QString m_path;
};

/// Creates a fresh sample Homebrew: whatever is below the folder is replaced.
bool createPrefix(const Catalogue &catalogue, const QString &path, const QString &brewExecutable);

} // namespace sample
