#include "core/authorization/AskpassFiles.h"

#include "core/files/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUuid>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace larkspur {

namespace {

constexpr int ownerOnly = 0600;
const QString memoryFilePrefix = QStringLiteral("larkspur-askpass-");

/// The script quotes the path, so the few characters that mean something inside quotes are escaped.
QByteArray scriptText(const QString &secretPath) {
    QString path = secretPath;
    path.replace(QRegularExpression(QStringLiteral("([\\\\\"$`])")), QStringLiteral("\\\\1"));
    return QStringList{QStringLiteral("#!/bin/bash"),
                       QStringLiteral("if [ -n \"$LARKSPUR_ASKPASS_PASSWORD\" ]; then"),
                       QStringLiteral("  printf '%s\\n' \"$LARKSPUR_ASKPASS_PASSWORD\""),
                       QStringLiteral("elif [ -f \"") + path + QStringLiteral("\" ]; then"),
                       QStringLiteral("  cat \"") + path + QStringLiteral("\""),
                       QStringLiteral("fi")}
        .join(QLatin1Char('\n'))
        .toUtf8();
}

/// A new file that nobody else can open; false with errno set.
bool createPrivately(const QString &path, const QByteArray &bytes) {
    const int file = ::open(QFile::encodeName(path).constData(),
                            O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, ownerOnly);
    if (file < 0)
        return false;
    const bool isWhole = ::write(file, bytes.constData(), static_cast<std::size_t>(bytes.size())) ==
                         static_cast<ssize_t>(bytes.size());
    const int reason = isWhole ? 0 : (errno ? errno : ENOSPC);
    ::close(file);
    errno = reason;
    return isWhole;
}

void overwriteAndRemove(const QString &path) {
    QFile file(path);
    if (!QFileInfo(path).isSymLink() && file.open(QIODevice::ReadWrite)) {
        file.write(QByteArray(file.size(), '\0'));
        file.flush();
        ::fsync(file.handle());
        file.close();
    }
    QFile::remove(path);
}

/// Removes the secret and, if it is a link of ours, what it points at.
void removeSecret(const QString &path) {
    if (const QFileInfo info(path); info.isSymLink()) {
        const QString target = info.symLinkTarget();
        if (QFileInfo(target).fileName().startsWith(memoryFilePrefix))
            overwriteAndRemove(target);
        QFile::remove(path);
    } else if (info.exists()) {
        overwriteAndRemove(path);
    }
}

QString reasonOf(const QString &path) {
    return QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
}

} // namespace

AskpassFiles::AskpassFiles(QString scriptPath, QString secretPath, QString memoryFolder)
    : m_scriptPath(std::move(scriptPath))
    , m_secretPath(std::move(secretPath))
    , m_memoryFolder(std::move(memoryFolder)) {}

std::expected<void, QString> AskpassFiles::writeScript() const {
    return writeFileAtomically(m_scriptPath, scriptText(m_secretPath),
                               QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                                   QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
}

AskpassFiles::Secret::~Secret() {
    removeSecret(m_path);
}

std::expected<std::unique_ptr<AskpassFiles::Secret>, QString>
AskpassFiles::keepSecret(Password password) const {
    if (auto script = writeScript(); !script)
        return std::unexpected(script.error());
    removeLeftover();
    QDir().mkpath(QFileInfo(m_secretPath).absolutePath());
    // From here on whatever is there is removed again, also if only half of it could be made.
    std::unique_ptr<Secret> secret(new Secret(m_secretPath));
    QByteArray line = password.utf8() + '\n';
    const QString inMemory =
        QDir(m_memoryFolder).filePath(memoryFilePrefix + QUuid::createUuid().toString(QUuid::WithoutBraces));
    bool isKept =
        !m_memoryFolder.isEmpty() && QFile::link(inMemory, m_secretPath) && createPrivately(inMemory, line);
    if (!isKept) {
        removeSecret(m_secretPath);
        isKept = createPrivately(m_secretPath, line);
    }
    const QString reason = isKept ? QString() : reasonOf(m_secretPath);
    wipe(line);
    if (!isKept)
        return std::unexpected(reason);
    return secret;
}

bool AskpassFiles::hasLeftover() const {
    const QFileInfo info(m_secretPath);
    return info.isSymLink() || info.exists();
}

void AskpassFiles::removeLeftover() const {
    removeSecret(m_secretPath);
}

} // namespace larkspur
