#include "core/output/TerminalReader.h"
#include "core/output/Transcript.h"

#include <QTest>

using namespace larkspur;

namespace {

/// What stands in the end when the bytes come in pieces of the given size.
QStringList readInPieces(const QByteArray &bytes, qsizetype size) {
    TerminalReader reader;
    Transcript transcript;
    for (qsizetype i = 0; i < bytes.size(); i += size)
        transcript.apply(reader.feed(QByteArrayView(bytes).sliced(i, std::min(size, bytes.size() - i))));
    transcript.apply(reader.finish());
    return transcript.lines();
}

} // namespace

class TerminalReaderTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void reads_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("lines");
        const auto row = [](const char *name, const QByteArray &bytes, const QStringList &lines) {
            QTest::newRow(name) << bytes << lines;
        };
        row("lines of a terminal end with CR LF", "one\r\ntwo\r\n", {"one", "two"});
        row("a last row without an end counts", "one\r\ntw", {"one", "tw"});
        row("an empty line stays", "a\r\n\r\nb\r\n", {"a", "", "b"});
        row("a carriage return overwrites", "\r###  10.0%\r###### 45.0%\r######## 100.0%\r\nDownloaded\r\n",
            {"######## 100.0%", "Downloaded"});
        row("the rest of a longer row stays until erased", "abcdef\rxy\r\nabcdef\rxy\033[K\r\n",
            {"xycdef", "xy"});
        row("cursor up rewrites the rows of the queue",
            "\033[?25l\033[?2026h* biga 10%\r\n\033[K* bigb 20%\033[K\033[1F\033[?2026l"
            "\033[?2026h* biga 50%\r\n\033[K* bigb 60%\033[K\033[1F\033[?2026l"
            "\033[?2026h+ biga done\r\n\033[K+ bigb done\033[K\r\n\033[?2026l\033[?25h==> Installing "
            "biga\r\n",
            {"+ biga done", "+ bigb done", "==> Installing biga"});
        row("a header glued behind control sequences is a line of its own",
            "+ x\r\n\033[K\033[?2026l\033[?2026l\033[?25h\033[32m==>\033[0m \033[1mUpgrading x\033[0m\r\n",
            {"+ x", "==> Upgrading x"});
        row("titles and other strings vanish", "\033]0;brew\007text\033]8;;http://x\033\\link\r\n",
            {"textlink"});
        row("NUL, bell and backspace", QByteArray("\0==> a\007bx\bc\r\n", 11), {"==> abc"});
        row("a NUL that the terminal echoed", "^@==> Caveats\r\na^@b\r\n", {"==> Caveats", "a^@b"});
        row("characters of several bytes", "🍺  ✔︎ done ⠋\r\n", {"🍺  ✔︎ done ⠋"});
        row("bytes that are no text",
            "a\xff\xfe"
            "b\r\n",
            {"a\uFFFD\uFFFDb"});
        row("column moves", "12345\033[2Dab\033[1GX\r\n", {"X23ab"});
        row("erasing below", "a\r\nb\r\nc\033[2F\033[J\r\n", {"", ""});
        row("a sequence that never ends is dropped", "ok\r\n\033[12;12", {"ok"});
        row("moving above the first row stops there", "a\r\n\033[99Ab\r\n", {"b"});
    }
    void reads() {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        QCOMPARE(readInPieces(bytes, bytes.size()), lines);
        // However the kernel cuts the stream, the result is the same.
        for (const qsizetype size : {1, 2, 3, 7})
            QCOMPARE(readInPieces(bytes, size), lines);
    }

    void tellsThatTheLastLineMayGrow() {
        TerminalReader reader;
        OutputChange change = reader.feed("==> Upgrading chat");
        QVERIFY(change.lastLineOpen);
        change = reader.feed("ty\r\n");
        QCOMPARE(change.replaces, 1);
        QCOMPARE(change.lines, QStringList{"==> Upgrading chatty"});
        QVERIFY(!change.lastLineOpen);
        QVERIFY(reader.feed("").isEmpty());
    }

    void reachesNoFurtherThanTheScreen() {
        QByteArray bytes;
        for (int i = 0; i < 100; ++i)
            bytes += "line " + QByteArray::number(i) + "\r\n";
        bytes += "\033[500Ahere\033[K";
        const QStringList lines = readInPieces(bytes, 64);
        QCOMPARE(lines.size(), 100);
        QCOMPARE(lines.first(), "line 0");
        QCOMPARE(lines.count("here"), 1);
        QVERIFY(lines.indexOf("here") >= 100 - TerminalReader::screenRows);
    }

    void staysBoundedWithoutLineEnds() {
        TerminalReader reader;
        const QByteArray block(1024 * 1024, 'x');
        for (int i = 0; i < 8; ++i)
            for (const QString &line : reader.feed(block).lines)
                QVERIFY(line.size() <= TerminalReader::longestRow);
    }
};

QTEST_GUILESS_MAIN(TerminalReaderTest)
#include "TerminalReader_test.moc"
