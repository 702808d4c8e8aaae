#pragma once

#include <QDirIterator>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace larkspur::test {

/// The whole program on a sample Homebrew of its own.
class Program {
  public:
    struct Outcome {
        int status = -1;
        QString output;
        QString errors;
        QJsonDocument json() const { return QJsonDocument::fromJson(output.toUtf8()); }
    };

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString brew() const { return path("homebrew/bin/brew"); }

    std::unique_ptr<QProcess> start(const QStringList &words, const QStringList &environment = {}) {
        auto process = std::make_unique<QProcess>();
        QStringList all = QProcess::systemEnvironment();
        all += environment;
        process->setEnvironment(all);
        process->start(LARKSPUR_PROGRAM, QStringList{"--sample-folder=" + m_folder.path()} + words);
        return process;
    }
    static Outcome finish(QProcess &process) {
        if (process.state() != QProcess::NotRunning && !process.waitForFinished(100'000))
            qFatal("the program has not ended");
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    Outcome run(const QStringList &words, const QStringList &environment = {}) {
        return finish(*start(words, environment));
    }
    /// Puts a script in the place of brew. "$REAL" in it stands for the sample's own.
    void replaceBrew(const QByteArray &script) {
        const QString real = path("homebrew/bin/real-brew");
        if (!QFile::exists(real))
            QFile::rename(brew(), real);
        QFile::remove(brew());
        QFile file(brew());
        if (!file.open(QIODevice::WriteOnly))
            qFatal("brew cannot be replaced");
        file.write("#!/bin/bash\nREAL=" + real.toUtf8() + "\n" + script);
        file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeUser);
    }
    /// What the sample's sudo wants from now on.
    void setPassword(const QByteArray &password) const {
        QProcess process;
        process.start(brew(), {"--sudo-password", path("homebrew")});
        process.write(password);
        process.closeWriteChannel();
        if (!process.waitForFinished() || process.exitCode() != 0)
            qFatal("the password cannot be set");
    }
    /// The sample's files in which the text stands.
    QStringList filesWith(const QByteArray &text) const {
        QStringList found;
        QDirIterator entries(m_folder.path(), QDir::Files | QDir::Hidden | QDir::System,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            QFile file(entries.next());
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(text))
                found.append(file.fileName());
        }
        return found;
    }

  private:
    QTemporaryDir m_folder;
};

} // namespace larkspur::test
