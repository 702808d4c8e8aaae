#include "core/log/Logger.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QTest>
#include <QThreadPool>

using namespace larkspur;
using namespace larkspur::test;

class LoggerTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

  private Q_SLOTS:
    void writesLines() {
        Logger log(m_folder.filePath("a/b"),
                   [] { return QDateTime(QDate(2026, 11, 22), QTime(20, 57, 39), Qt::UTC); });
        log.info("one");
        log.warn("two\nlines");
        log.error("three");
        QCOMPARE(Fixture::read(log.filePath()),
                 "[2026-11-22T20:57:39Z] [INFO] one\n[2026-11-22T20:57:39Z] [WARN] two lines\n"
                 "[2026-11-22T20:57:39Z] [ERROR] three\n");
    }

    void rotatesAtTheLimit_data() {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("rotated");
        QTest::newRow("full") << Logger::maxBytes << true;
        QTest::newRow("one byte less") << Logger::maxBytes - 1 << false;
    }
    void rotatesAtTheLimit() {
        QFETCH(qint64, size);
        QFETCH(bool, rotated);
        QTemporaryDir folder;
        Logger log(folder.path());
        Fixture::write(log.filePath(), QByteArray(size, 'x'));
        Fixture::write(log.previousFilePath(), "older");
        log.info("after");
        QCOMPARE(QFileInfo(log.previousFilePath()).size(), rotated ? size : 5);
        QCOMPARE(Fixture::read(log.filePath()).startsWith('['), rotated);
        QVERIFY(Fixture::read(log.filePath()).endsWith("after\n"));
    }

    void neverDisturbs() {
        // A file where the folder should be: nothing can be written, nothing happens.
        const QString file = m_folder.filePath("file");
        Fixture::write(file, "x");
        Logger log(file);
        log.error("lost");
        QCOMPARE(Fixture::read(file), "x");
        // The previous generation cannot be replaced: the line is written all the same.
        QTemporaryDir folder;
        Logger stuck(folder.path());
        Fixture::write(stuck.filePath(), QByteArray(Logger::maxBytes, 'x'));
        QVERIFY(QDir(folder.path()).mkpath("larkspur.log.1/inside"));
        stuck.info("after");
        QVERIFY(Fixture::read(stuck.filePath()).endsWith("after\n"));
    }

    void threadsDoNotMixLines() {
        Logger log(m_folder.filePath("threads"));
        for (int i = 0; i < 200; ++i)
            QThreadPool::globalInstance()->start([&log] { log.info(QString(100, 'x')); });
        QThreadPool::globalInstance()->waitForDone();
        const QStringList lines = Fixture::read(log.filePath()).trimmed().split('\n');
        QCOMPARE(lines.size(), 200);
        for (const QString &line : lines)
            QVERIFY(line.endsWith("] [INFO] " + QString(100, 'x')));
    }
};

QTEST_GUILESS_MAIN(LoggerTest)
#include "Logger_test.moc"
