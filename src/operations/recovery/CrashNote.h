#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

namespace larkspur {

/// What an operation wants to be known should the program die under it: a small file of its own, on the disk
/// before the step that it is about. Notes never replace each other, so that what one crash has left is still
/// known after the next.
class CrashNote {
  public:
    /// `kind`: letters and dashes; says who understands the note. The error is one line of text.
    static std::expected<CrashNote, QString> write(const QString &folder, const QString &kind,
                                                   const QJsonObject &contents);

    /// Replaces the contents. The error is one line of text; the old ones stand then.
    std::expected<void, QString> update(const QJsonObject &contents) const;
    /// What it was about is over, or put right.
    void remove() const;

    const QString &path() const { return m_path; }
    const QJsonObject &contents() const { return m_contents; }

    /// The notes of a kind that are there, the oldest first.
    struct Standing;
    static Standing standing(const QString &folder, const QString &kind);
    /// Also true where it cannot be told.
    static bool anyStanding(const QString &folder, const QString &kind);

    /// Keeps a note that makes no sense under a name at which nobody looks again; returns that. The error is
    /// one line of text; the note is then where it was.
    std::expected<QString, QString> setAside() const;

  private:
    CrashNote(QString path, QJsonObject contents)
        : m_path(std::move(path))
        , m_contents(std::move(contents)) {}

    QString m_path;
    QJsonObject m_contents;
};

struct CrashNote::Standing {
    QList<CrashNote> readable;
    QList<CrashNote> unreadable; ///< these hold no object
    QStringList failures = {};   ///< why there may be more, and which cannot be read for now: lines of text
};

} // namespace larkspur
