#pragma once

#include "core/log/Logger.h"
#include "core/output/OutputSink.h"
#include "core/output/Transcript.h"
#include "core/settings/FilePreferenceStore.h"
#include "core/settings/Preferences.h"

#include <QFile>
#include <QTemporaryDir>

namespace larkspur::test {

/// A scratch folder with a logger and preferences of its own.
class Fixture {
  public:
    Fixture()
        : logger(folder.filePath(QStringLiteral("Logs")))
        , preferences(std::make_unique<FilePreferenceStore>(folder.path())) {}

    QString path(const char *name) const { return folder.filePath(QLatin1String(name)); }
    QString logText() const { return read(logger.filePath()); }

    static QString read(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    static void write(const QString &path, const QByteArray &bytes, bool executable = false) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("a test file cannot be written");
        file.write(bytes);
        if (executable)
            file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeUser);
    }

    QTemporaryDir folder;
    Logger logger;
    Preferences preferences;
};

/// Keeps what an operation printed.
class RecordingSink final : public OutputSink {
  public:
    void receive(const OutputChange &change) override { transcript.apply(change); }
    QStringList lines() const { return transcript.lines(); }

    Transcript transcript;
};

} // namespace larkspur::test
