#include "operations/kegs/KegIndexFile.h"

#include "core/files/AtomicFile.h"
#include "core/files/WholeFile.h"
#include "core/lock/ChangeLock.h"

#include <QFile>
#include <QFileInfo>

namespace larkspur {

std::expected<LockFile, QString> KegIndexFile::lock() const {
    return lockForChange(m_lock, QStringLiteral("the saved versions in ") + QFileInfo(m_lock).path());
}

QList<KegEntry> KegIndexFile::read() {
    constexpr qint64 largest = 16 * 1024 * 1024; // bytes; far beyond what a large machine needs
    const auto text = readWholeFile(m_path, largest);
    KegIndex index = kegIndexFromText(text.value_or(QByteArray()));
    m_failure = !text && text.error().mayPass ? text.error().reason : QString();
    m_isWhole = text && index.isWhole;
    m_isUnreadable = !m_isWhole && (text || !text.error().isMissing);
    return std::move(index.entries);
}

std::expected<void, QString> KegIndexFile::write(const QList<KegEntry> &entries) {
    const QString aside = m_path + QStringLiteral(".unreadable");
    if (m_isUnreadable && !QFile::exists(aside) && !QFile::rename(m_path, aside))
        return std::unexpected(QStringLiteral("%1 cannot be moved aside").arg(m_path));
    m_isUnreadable = false;
    return writeFileAtomically(m_path, kegIndexText(entries));
}

} // namespace larkspur
