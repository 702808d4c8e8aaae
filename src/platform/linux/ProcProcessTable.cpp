#include "platform/linux/ProcProcessTable.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace larkspur {

namespace {

struct ProcessState {
    qint64 group = 0;
    bool hasEnded = false;
};

/// "12 (name) S 1 7 …": the third word is the state, the fifth the group. The name may hold anything.
ProcessState stateFrom(const QByteArray &status) {
    const QList<QByteArray> words = status.mid(status.lastIndexOf(')') + 1).simplified().split(' ');
    if (words.size() < 3)
        return {};
    return {.group = words[2].toLongLong(), .hasEnded = words[0] == "Z" || words[0] == "X"};
}

QStringList processIds() {
    return QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs);
}

bool isSameFile(const struct stat &one, const struct stat &other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// False too where the process has ended, or is another user's.
bool hasOpen(const QString &process, const struct stat &file) {
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(process));
    for (const QString &name :
         descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        struct stat open{};
        if (::stat(QFile::encodeName(descriptors.filePath(name)).constData(), &open) == 0 &&
            isSameFile(open, file))
            return true;
    }
    return false;
}

} // namespace

std::optional<GroupMembers> ProcProcessTable::membersOf(qint64 group) const {
    if (!QFile::exists(QStringLiteral("/proc/self/stat")))
        return std::nullopt;
    GroupMembers members;
    for (const QString &name : processIds()) {
        QFile status(QStringLiteral("/proc/%1/stat").arg(name));
        if (!status.open(QIODevice::ReadOnly)) // may be gone meanwhile
            continue;
        const ProcessState state = stateFrom(status.readAll());
        if (state.group == group && state.hasEnded)
            members.hasEnded = true;
        else if (state.group == group)
            members.running.append(name.toLongLong());
    }
    return members;
}

QList<qint64> ProcProcessTable::holdersOf(int descriptor) const {
    struct stat file{};
    if (::fstat(descriptor, &file) != 0)
        return {};
    QList<qint64> holders;
    for (const QString &name : processIds())
        if (name.toLongLong() != ::getpid() && hasOpen(name, file))
            holders.append(name.toLongLong());
    return holders;
}

QString ProcProcessTable::nameOf(qint64 process) const {
    QFile name(QStringLiteral("/proc/%1/comm").arg(process));
    return name.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(name.readAll().trimmed()) : QString();
}

} // namespace larkspur
