#pragma once

#include "core/authorization/Password.h"

#include <expected>
#include <memory>

namespace larkspur {

/// The two files through which sudo gets a password: the askpass script, and the secret that the script
/// prints where Homebrew has dropped the variable with the password from its environment.
class AskpassFiles {
  public:
    /// `memoryFolder`: an owner-only folder that lives in memory, where there is one; the secret is then kept
    /// there and only linked to.
    AskpassFiles(QString scriptPath, QString secretPath, QString memoryFolder);

    const QString &scriptPath() const { return m_scriptPath; }

    /// Writes the script, mode 0755, whole or not at all. The error is one line of text.
    std::expected<void, QString> writeScript() const;

    /// The secret file as long as this object lives. It is overwritten and removed with it.
    class Secret {
      public:
        Secret(const Secret &) = delete;
        Secret &operator=(const Secret &) = delete;
        ~Secret();

      private:
        friend class AskpassFiles;
        explicit Secret(QString path)
            : m_path(std::move(path)) {}
        QString m_path;
    };

    /// Writes the script anew and the secret, mode 0600; one that is there already is removed first. The
    /// error is one line of text.
    std::expected<std::unique_ptr<Secret>, QString> keepSecret(Password password) const;

    /// Whether a crash has left a secret behind.
    bool hasLeftover() const;
    /// Overwrites and removes it. Only while nobody else can be using it.
    void removeLeftover() const;

  private:
    QString m_scriptPath;
    QString m_secretPath;
    QString m_memoryFolder;
};

} // namespace larkspur
