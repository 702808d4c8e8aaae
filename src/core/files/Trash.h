#pragma once

#include <QString>

#include <expected>

namespace larkspur {

/// Port: the system's trash, where what a person may miss is put instead of being removed.
class Trash {
  public:
    virtual ~Trash() = default;

    /// Moves a file or folder; returns where it is now. The error is one line of text; everything is then
    /// where it was. Blocking.
    virtual std::expected<QString, QString> take(const QString &path) = 0;
};

/// Where there is no trash: everything stays where it is.
class NullTrash final : public Trash {
  public:
    std::expected<QString, QString> take(const QString &path) override;
};

/// A folder that serves as trash, on the volume of what is thrown away.
class FolderTrash final : public Trash {
  public:
    explicit FolderTrash(QString folder)
        : m_folder(std::move(folder)) {}
    std::expected<QString, QString> take(const QString &path) override;

  private:
    QString m_folder;
};

} // namespace larkspur
