#pragma once

#include <QString>
#include <QStringList>

namespace larkspur {

class Logger;

/// Applications that stand aside, on their own volume and without a copy, while Homebrew reinstalls their
/// cask: a reinstallation removes them first, and one that then fails would leave nothing. Put back when this
/// object goes, unless `discard` was called. A note in the data folder lets a later start put them back if
/// the program dies.
class MovedAside {
  public:
    /// Moves what exists and may be moved; the rest stays where it is. `noteFile`: where the note is kept.
    MovedAside(const QStringList &applications, QString noteFile, Logger &logger);
    MovedAside(const MovedAside &) = delete;
    MovedAside &operator=(const MovedAside &) = delete;
    ~MovedAside() { putBack(); }

    /// Returns the applications to their places; returns the paths.
    QStringList putBack();
    /// The new ones are in place: removes the old. Blocking.
    void discard();

    /// Puts back what a crash has left aside; removes the note.
    static void recover(const QString &noteFile, Logger &logger);

  private:
    QStringList m_applications;
    QString m_noteFile;
    Logger *m_logger;
};

} // namespace larkspur
