#include "core/files/AtomicFile.h"
#include "core/files/WholeFile.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

namespace {

/// A disk that fails at one step.
class FailingCalls final : public FileCalls {
  public:
    explicit FailingCalls(QString step)
        : m_step(std::move(step)) {}
    int create(const QByteArray &path) const override {
        return fails("create") ? -1 : FileCalls::create(path);
    }
    ssize_t write(int file, const char *bytes, std::size_t size) const override {
        if (fails("write"))
            return -1;
        if (m_step == "none")
            return 0;
        if (m_step == "half" && size > 5000)
            return FileCalls::write(file, bytes, 5000);
        return fails("half") ? -1 : FileCalls::write(file, bytes, size);
    }
    int setMode(int file, mode_t mode) const override {
        return fails("mode") ? -1 : FileCalls::setMode(file, mode);
    }
    int sync(int file) const override { return fails("sync") ? -1 : FileCalls::sync(file); }
    off_t size(int file) const override { return m_step == "size" ? 0 : FileCalls::size(file); }
    int close(int file) const override {
        const int result = FileCalls::close(file);
        return fails("close") ? -1 : result;
    }
    int rename(const QByteArray &from, const QByteArray &to) const override {
        return fails("rename") ? -1 : FileCalls::rename(from, to);
    }
    int syncFolder(const QByteArray &folder) const override {
        m_synced.append(QString::fromLocal8Bit(folder));
        return fails("folder") || fails(folder.constData()) ? -1 : FileCalls::syncFolder(folder);
    }
    /// The folders whose names were to reach the disk, in this order.
    const QStringList &synced() const { return m_synced; }

  private:
    bool fails(const char *step) const {
        errno = ENOSPC;
        return m_step == step;
    }
    QString m_step;
    mutable QStringList m_synced;
};

} // namespace

/// Files that people trust.
class AtomicFileTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void replacesWholeFilesAndLeavesNothingBeside() {
        QTemporaryDir folder;
        const QString path = folder.filePath("deep/er/file.json");
        QVERIFY(writeFileAtomically(path, "one"));
        QVERIFY(writeFileAtomically(path, QByteArray(3'000'000, 'x')));
        QVERIFY(writeFileAtomically(path, "two"));
        QCOMPARE(Fixture::read(path), "two");
        QCOMPARE(QDir(folder.filePath("deep/er")).entryList(QDir::Files | QDir::Hidden),
                 QStringList{"file.json"});
    }

    void aFailureKeepsTheOldAndSaysWhy() {
        QTemporaryDir folder;
        Fixture::write(folder.filePath("file"), "x");
        const auto below = writeFileAtomically(folder.filePath("file/below"), "y");
        QVERIFY(!below && below.error().contains("cannot be made"));
        QVERIFY(QDir(folder.path()).mkdir("folder"));
        const auto inPlaceOfAFolder = writeFileAtomically(folder.filePath("folder"), "y");
        QVERIFY(!inPlaceOfAFolder && !inPlaceOfAFolder.error().isEmpty());
        const auto noSpace = writeFileAtomically("/dev/full/x", "y");
        QVERIFY(!noSpace);
        QCOMPARE(Fixture::read(folder.filePath("file")), "x");
    }

    void aDiskThatFailsAtAnyStepKeepsTheOld_data() {
        QTest::addColumn<QString>("step");
        for (const char *step :
             {"create", "mode", "write", "half", "none", "sync", "size", "close", "rename", "folder"})
            QTest::newRow(step) << step;
    }
    void aDiskThatFailsAtAnyStepKeepsTheOld() {
        QFETCH(QString, step);
        QTemporaryDir folder;
        const QString path = folder.filePath("file.json");
        QVERIFY(writeFileAtomically(path, "old"));
        const FailingCalls calls(step);
        const auto written = writeFileAtomically(path, QByteArray(10'000, 'n'), {}, calls);
        QVERIFY(!written && !written.error().isEmpty());
        // Only where the names of the folder cannot be synced the new one stands already.
        QCOMPARE(Fixture::read(path), step == "folder" ? QString(10'000, 'n') : "old");
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"file.json"});
    }

    void foldersThatAreMadeReachTheDiskToo() {
        QTemporaryDir folder;
        const QString path = folder.filePath("deep/er/file.json");
        // One that did not is made again: else the next file in it would be lost with it.
        const FailingCalls failing(folder.filePath("deep"));
        const auto refused = writeFileAtomically(path, "x", {}, failing);
        QVERIFY(!refused && refused.error().contains(folder.filePath("deep") + " cannot be synced: "));
        QVERIFY(!QFile::exists(folder.filePath("deep/er")));
        const FailingCalls calls("nowhere");
        for (int i = 0; i < 2; ++i)
            QVERIFY(writeFileAtomically(path, "x", {}, calls));
        QCOMPARE(calls.synced(), QStringList({folder.filePath("deep"), folder.filePath("deep/er"),
                                              folder.filePath("deep/er")}));
    }

    void aFullVolumeKeepsTheOld() {
        // Without a volume of one's own: a limit on the size of files fails writes as a full disk does.
        QTemporaryDir folder;
        const QString path = folder.filePath("file.json");
        QVERIFY(writeFileAtomically(path, "old"));
        rlimit before{};
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{4096, before.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &small);
        const auto written = writeFileAtomically(path, QByteArray(5000, 'n')); // fits into any buffer
        ::setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(!written);
        QCOMPARE(Fixture::read(path), "old");
    }

    void permissionsAndLinksStay() {
        QTemporaryDir folder;
        Fixture::write(folder.filePath("real"), "old");
        QFile::setPermissions(folder.filePath("real"), QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(QFile::link(folder.filePath("real"), folder.filePath("link")));
        QVERIFY(writeFileAtomically(folder.filePath("link"), "new"));
        QVERIFY(QFileInfo(folder.filePath("link")).isSymLink());
        QCOMPARE(Fixture::read(folder.filePath("real")), "new");
        QVERIFY(!(QFile::permissions(folder.filePath("real")) & (QFile::ReadGroup | QFile::ReadOther)));
    }

    void whatADeadWriterLeftIsRemoved() {
        QTemporaryDir folder;
        QProcess dead;
        dead.start("true", QStringList());
        dead.waitForStarted();
        const auto id = dead.processId();
        QVERIFY(dead.waitForFinished());
        Fixture::write(folder.filePath(QString(".a.json.%1-0.new").arg(id)), "half");
        Fixture::write(folder.filePath(QString(".a.json.%1-0.new").arg(::getpid())), "under way");
        Fixture::write(folder.filePath("mine.new"), "mine");
        QVERIFY(hasUnfinishedFiles(folder.path()));
        removeUnfinishedFiles(folder.path());
        QVERIFY(!hasUnfinishedFiles(folder.path()));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }

    void filesThatAreTrapsAreNotRead() {
        QTemporaryDir folder;
        const QString path = folder.filePath("file");
        QVERIFY(readWholeFile(path, 10).error().isMissing);
        Fixture::write(path, "12345678901");
        QVERIFY(!readWholeFile(path, 10) && !readWholeFile(path, 10).error().isMissing);
        QCOMPARE(*readWholeFile(path, 11), "12345678901");
        QVERIFY(!readWholeFile(folder.path(), 10));
        QVERIFY(!readWholeFile("/dev/zero", 10));
        QCOMPARE(::mkfifo(qPrintable(folder.filePath("pipe")), 0600), 0);
        QVERIFY(!readWholeFile(folder.filePath("pipe"), 10)); // does not wait for a writer
    }
};

QTEST_GUILESS_MAIN(AtomicFileTest)
#include "AtomicFile_test.moc"
