#pragma once

#include <QHash>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <expected>

namespace larkspur {

/// What the folders of a Homebrew say is installed, read without brew. Blocking: run it in a worker.
class InstalledPackages {
  public:
    /// Folders that are not there hold nothing, below a prefix that is there. Whatever else keeps one from
    /// being read, a link that leads nowhere too, is the error, one line of text: a list with a hole must not
    /// pass for what is installed.
    static std::expected<InstalledPackages, QString> at(const QString &prefix);

    /// Versions of a formula, under its short name or an alias; empty if it is not installed.
    QStringList formulaVersions(const QString &name) const;
    QStringList caskVersions(const QString &token) const;
    QStringList versions(const QString &name, bool isCask) const {
        return isCask ? caskVersions(name) : formulaVersions(name);
    }
    bool isPinned(const QString &name, bool isCask) const;

    /// Whether a formula's links lead to one of its kegs: opt link, and for one that is not keg-only the
    /// record.
    bool isLinked(const QString &name) const { return m_linked.contains(name); }
    QStringList linkedFormulae() const { return m_linked.keys(); }
    /// Whether a formula is linked by the record while one of its programs lacks its link.
    bool isHalfLinked(const QString &name) const { return m_halfLinked.contains(name); }
    /// The version that Homebrew has moved aside to reinstall a formula; empty if it has come to the end.
    QString backupOf(const QString &formula) const { return m_backups.value(formula); }
    QStringList formulaeWithBackup() const { return m_backups.keys(); }
    static const QString backupSuffix; ///< of the name of such a keg's folder
    bool hasOptLink(const QString &name) const { return m_opt.contains(name); }
    /// Every formula with the version in use: the one that is linked, else the newest, else the one that
    /// waits for the end of a reinstallation. Sorted by name.
    QMap<QString, QString> currentFormulae() const;
    QMap<QString, QString> currentCasks() const;
    QString currentVersion(const QString &formula) const;

    /// Short names of the formulae that have a version which `earlier` had not.
    QStringList formulaeNewSince(const InstalledPackages &earlier) const;

  private:
    static InstalledPackages read(const QString &prefix);
    void takeOutBackups();

    QHash<QString, QStringList> m_formulae;
    QHash<QString, QString> m_aliases; ///< name of a link in opt to the short name it leads to
    QHash<QString, QString> m_opt;     ///< version that a formula's own link in opt leads to
    QHash<QString, QString> m_linked;  ///< version that a formula's link record leads to
    QSet<QString> m_halfLinked;
    QHash<QString, QString> m_backups; ///< version that stands aside for a reinstallation
    QHash<QString, QStringList> m_casks;
    QStringList m_pinnedFormulae;
    QStringList m_pinnedCasks;
};

} // namespace larkspur
