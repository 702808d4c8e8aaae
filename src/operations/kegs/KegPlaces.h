#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace larkspur {

/// Where the copies of kegs, their lists of files and their index lie in the folder that keeps them.
class KegPlaces {
  public:
    explicit KegPlaces(QString folder)
        : m_folder(std::move(folder)) {}

    const QString &folder() const { return m_folder; }
    QString index() const;
    QString indexLock() const;
    QString rack(const QString &formula) const;
    QString copy(const QString &formula, const QString &version) const;
    /// The copy's list of files.
    QString manifest(const QString &formula, const QString &version) const;
    /// Where a copy waits until its successor stands.
    QString earlier(const QString &formula, const QString &version) const;

    /// A fresh place for a copy in the making, and the list of its files.
    QString partial() const;
    static QString manifestOfPartial(const QString &partial);
    /// A fresh place for what is being removed.
    QString discarded() const;

    /// Why what lies there cannot be told: one line of text, empty if it can.
    QString unreadable() const;

    struct Copy {
        QString formula;
        QString version;
    };
    /// What is there, whether the index names it or not; nothing that a link leads to.
    QList<Copy> copies() const;
    QList<Copy> earlierCopies() const;
    /// Copies in the making or being removed, and their lists.
    QStringList underWay() const;

  private:
    QString m_folder;
};

} // namespace larkspur
