#include "tests/support/Processes.h"

#include <QDir>
#include <QProcess>

#include <csignal>
#include <unistd.h>

namespace larkspur::test {

namespace {

/// "12 /usr/bin/program words"
QList<QByteArray> allProcesses() {
    QList<QByteArray> lines;
    const QDir table("/proc");
    if (!table.exists()) {
        QProcess list;
        list.start("ps", {"-axo", "pid=,args="});
        list.waitForFinished();
        for (const QByteArray &line : list.readAllStandardOutput().split('\n'))
            lines.append(line.trimmed());
        return lines;
    }
    for (const QString &id : table.entryList({"[0-9]*"}, QDir::Dirs)) {
        QFile words(table.filePath(id + "/cmdline"));
        if (words.open(QIODevice::ReadOnly)) // may have ended meanwhile
            lines.append(id.toUtf8() + ' ' + words.readAll().replace('\0', ' ').trimmed());
    }
    return lines;
}

} // namespace

QList<pid_t> processesWith(const QByteArray &text) {
    QList<pid_t> found;
    for (const QByteArray &line : allProcesses()) {
        const pid_t id = line.left(line.indexOf(' ')).toInt();
        if (id > 0 && id != ::getpid() && line.mid(line.indexOf(' ')).contains(text))
            found.append(id);
    }
    return found;
}

void killProcessesWith(const QByteArray &text) {
    for (const pid_t id : processesWith(text))
        ::kill(id, SIGKILL);
}

} // namespace larkspur::test
