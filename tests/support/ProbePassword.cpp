#include "tests/support/ProbePassword.h"

#include <QDirIterator>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace larkspur::test {

namespace {

constexpr quint64 largestRegion = quint64(8) << 30; // a sanitizer's tables are larger

/// Bytes from one letter to the next: UTF-8, UTF-16, and the list in which a text field keeps what was typed.
constexpr std::array<qsizetype, 5> distances{1, 2, 12, 16, 20};

/// Opened before anything can forbid it.
const int ownMemory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
std::array<char, 1 << 20> window; // NOLINT: what is read of the memory, itself not looked at

char swapped(char letter) {
    const bool isLetter = letter >= 'a' && letter <= 'z';
    return isLetter ? static_cast<char>('a' + (letter - 'a' + 13) % 26) : '\0';
}

/// Where the disguised text stands in plain, `step` bytes from letter to letter. Compares letter by letter,
/// so that the plain text arises nowhere.
QList<qsizetype> places(const char *bytes, qsizetype size, const QByteArray &disguise, qsizetype step) {
    QList<qsizetype> found;
    const char *last = bytes + size - disguise.size() * step;
    const auto next = [&](const char *from) {
        return from > last ? nullptr
                           : static_cast<const char *>(std::memchr(
                                 from, swapped(disguise.front()), static_cast<std::size_t>(last - from + 1)));
    };
    for (const char *at = next(bytes); at; at = next(at + 1)) {
        qsizetype same = 0;
        while (same < disguise.size() && swapped(at[same * step]) == disguise[same] &&
               (step == 1 || at[same * step + 1] == 0))
            ++same;
        if (same == disguise.size())
            found.append(at - bytes);
    }
    return found;
}

QStringList placesInRegion(quint64 start, quint64 end, const QByteArray &disguise) {
    const quint64 overlap = static_cast<quint64>(disguise.size() * distances.back());
    QStringList found;
    for (quint64 at = start; at < end; at += window.size() - overlap) {
        const auto count = ::pread(ownMemory, window.data(), std::min<quint64>(window.size(), end - at),
                                   static_cast<off_t>(at));
        for (const qsizetype step : distances)
            for (const qsizetype place : places(window.data(), count, disguise, step))
                found.append(QStringLiteral("%1, every %2 bytes")
                                 .arg(at + static_cast<quint64>(place), 0, 16)
                                 .arg(step));
        std::ranges::fill(window, '\0');
    }
    return found;
}

} // namespace

ProbePassword::ProbePassword() {
    QProcess maker;
    maker.start("/bin/sh",
                {"-c", QString("tr -dc a-z </dev/urandom | head -c %1 | tr a-z n-za-m").arg(length)});
    if (!maker.waitForFinished())
        qFatal("no password can be made up");
    m_disguise = maker.readAllStandardOutput();
    if (m_disguise.size() != length)
        qFatal("the password that was made up is not whole");
}

Password ProbePassword::password() const {
    QByteArray plain(m_disguise.size(), Qt::Uninitialized);
    std::ranges::transform(m_disguise, plain.begin(), swapped);
    return Password(std::move(plain));
}

void ProbePassword::spell(const std::function<void(QChar)> &type) const {
    for (const char letter : m_disguise)
        type(QLatin1Char(swapped(letter)));
}

bool ProbePassword::canLook() {
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
    return false; // keeps freed memory and left stacks as they were, which is its work
#endif
#endif
    return ownMemory >= 0;
}

QString ProbePassword::copiesInMemory(qsizetype letters) const {
    const QByteArray wanted = m_disguise.left(letters);
    QFile table("/proc/self/maps");
    if (!canLook() || !table.open(QIODevice::ReadOnly))
        return {};
    QString found;
    for (const QByteArray &line : table.readAll().split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.size() < 2 || !words[1].startsWith("rw"))
            continue;
        const quint64 start = words[0].split('-').first().toULongLong(nullptr, 16);
        const quint64 end = words[0].split('-').last().toULongLong(nullptr, 16);
        if (end - start > largestRegion)
            continue;
        const auto own = reinterpret_cast<quint64>(window.data());
        const bool hasWindow = start <= own && own < end; // then before and behind it
        const QStringList inside =
            hasWindow ? placesInRegion(start, own, wanted) + placesInRegion(own + window.size(), end, wanted)
                      : placesInRegion(start, end, wanted);
        for (const QString &place : inside)
            found += place + " of " + words.last() + '\n';
    }
    return found;
}

QString ProbePassword::filesWith(const QString &folder) const {
    QString found;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            continue;
        // Through the window, of which nothing stays.
        while (const auto count = std::max<qint64>(0, file.read(window.data(), window.size()))) {
            if (!places(window.data(), count, m_disguise, 1).isEmpty() ||
                !places(window.data(), count, m_disguise, 2).isEmpty())
                found += file.fileName() + '\n';
        }
        std::ranges::fill(window, '\0');
    }
    return found;
}

} // namespace larkspur::test
