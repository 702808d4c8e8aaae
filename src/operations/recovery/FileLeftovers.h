#pragma once

#include "operations/recovery/Leftover.h"

#include <QStringList>

namespace larkspur {

class AskpassFiles;

/// The password that a child was given.
class SecretLeftover final : public Leftover {
  public:
    explicit SecretLeftover(const AskpassFiles &files)
        : m_files(files) {}
    bool exists(const QString &prefix) const override;
    Task<> putRight(LockedWork work) override;

  private:
    const AskpassFiles &m_files;
};

/// Files whose writing was cut off.
class UnfinishedFilesLeftover final : public Leftover {
  public:
    explicit UnfinishedFilesLeftover(QStringList folders)
        : m_folders(std::move(folders)) {}
    bool exists(const QString &prefix) const override;
    Task<> putRight(LockedWork work) override;

  private:
    QStringList m_folders;
};

} // namespace larkspur
