#pragma once

#include "tests/support/Program.h"

#include <QDir>
#include <QProcessEnvironment>

namespace larkspur::test {

/// The program under `script`, which gives it a controlling terminal.
class TerminalSession {
  public:
    TerminalSession(Program &program, const QStringList &words, const QString &before = "exec ") {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_RUNTIME_DIR", runtimeFolder(program));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        // "exec": a shell in between would answer the interrupt with a status of its own.
        const QString line =
            before + LARKSPUR_PROGRAM + " --sample-folder=" + program.path("") + ' ' + words.join(' ');
        m_process.start("script", {"-qec", line, "/dev/null"});
    }
    /// What has come until the text came; fails the test if it never does.
    bool reach(const QByteArray &text) {
        QElapsedTimer clock;
        clock.start();
        while (!m_new.contains(text) && clock.elapsed() < 20'000) {
            m_process.waitForReadyRead(100);
            m_new += m_process.readAll();
        }
        const bool found = m_new.contains(text);
        m_all += m_new;
        m_new = m_new.mid(found ? m_new.indexOf(text) + text.size() : 0);
        return found;
    }
    bool prompt() {
        const bool found = reach("Password (empty to cancel): ");
        QTest::qWait(150); // typing ahead of a password prompt is thrown away
        return found;
    }
    void type(const QByteArray &line) { press(line + '\n'); }
    void press(const QByteArray &keys) { m_process.write(keys); }
    int finish() {
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(30'000))
            qFatal("the program has not ended");
        m_all += m_new + m_process.readAll();
        return m_process.exitCode();
    }
    /// Closes the terminal, as a window is closed.
    void hangUp() {
        m_process.kill();
        m_process.waitForFinished();
    }
    /// A folder in memory, or what stands in for one.
    static QString runtimeFolder(Program &program) {
        const QString folder = program.path("runtime");
        QDir().mkpath(folder);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return folder;
    }
    const QByteArray &all() const { return m_all; }

  private:
    QProcess m_process;
    QByteArray m_new;
    QByteArray m_all;
};

} // namespace larkspur::test
