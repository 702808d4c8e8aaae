#include "tests/support/Program.h"

#include <QRegularExpression>
#include <QTest>

using namespace larkspur::test;

namespace {

/// What a terminal would obey: a clipboard write, a title, a cleared screen (twice), a deletion, an
/// overwritten line, turned directions; and a word that tells that the attack has come through.
const QString attack =
    u"\u001B]52;c;aGk=\u0007\u001B]0;title\u0007\u001B[2J\u009B2J\u007F\rmark\u202E\u2066"_qs;

/// The first character that a terminal would obey, with what stands before it.
QString obeyed(const QString &text) {
    static const QRegularExpression pattern(".{0,30}[\\x00-\\x08\\x0B-\\x1F\\x7F-\\x{9F}\\x{61C}\\x{200E}\\x{"
                                            "200F}\\x{202A}-\\x{202E}\\x{2066}-\\x{2069}]");
    return QString::fromLatin1(pattern.match(text).captured().toUtf8().toPercentEncoding(" "));
}

} // namespace

/// The terminal's commands with a Homebrew that ends each string of its JSON and each line of its text with
/// an attack on the person's terminal.
class HostileOutputTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Program> m_program;

    static QByteArray inJson(const QString &text) {
        QByteArray escaped;
        for (const QChar unit : text)
            escaped += "\\\\u" + QByteArray::number(unit.unicode(), 16).rightJustified(4, '0');
        return escaped;
    }

  private Q_SLOTS:
    void init() {
        m_program = std::make_unique<Program>();
        QCOMPARE(m_program->run({"status"}).status, 0);
        m_program->replaceBrew("text='s/$/" + attack.toUtf8() + "/'\njson='s/([^ ])\"(,?)$/\\1" +
                               inJson(attack) +
                               "\"\\2/'\n"
                               "run() { (exec -a \"${0%/*}/brew\" \"$REAL\" \"$@\"); }\n"
                               "case \"$*\" in\n"
                               "--prefix* | --cache* | --cellar* | tap) run \"$@\" ;;\n"
                               "*--json*) run \"$@\" | sed -E \"$json\" ;;\n"
                               "*) set -o pipefail\n" // ends after both of them
                               "{ run \"$@\" 2>&1 >&3 | sed \"$text\" >&2; } 3>&1 |\n"
                               "sed \"$text\" ;;\n"
                               "esac\n"
                               "exit ${PIPESTATUS[0]}\n");
    }

    void nothingThatIsPrintedIsObeyed_data() {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("says");
        for (const char *command : {"status", "list", "outdated", "pinned", "leaves", "taps", "services",
                                    "info heron", "info bluefinch", "deps quillmark", "install dovetail",
                                    "upgrade heron", "uninstall libtide", "upgrade --all"})
            QTest::newRow(command) << QString(command).split(' ') << "mark"; // the attack was made
        QTest::newRow("a name from outside") << QStringList{"info", "x" + attack} << "mark";
        QTest::newRow("search") << QStringList{"search", "widget"} << "Nothing is called"; // no hit is a name
    }
    void nothingThatIsPrintedIsObeyed() {
        QFETCH(QStringList, words);
        QFETCH(QString, says);
        const auto outcome = m_program->run(words);
        QCOMPARE(obeyed(outcome.output + outcome.errors), QString());
        QVERIFY2((outcome.output + outcome.errors).contains(says),
                 qPrintable(outcome.output + outcome.errors));
        QCOMPARE(obeyed(m_program->run({"log"}).output), QString());
    }

    void jsonEscapesAndKeepsIt_data() {
        QTest::addColumn<QStringList>("words");
        for (const char *command :
             {"status", "list", "outdated", "taps", "services", "info heron", "deps quillmark"})
            QTest::newRow(command) << QString(command + QByteArray(" --json")).split(' ');
    }
    void jsonEscapesAndKeepsIt() {
        QFETCH(QStringList, words);
        const auto outcome = m_program->run(words);
        QCOMPARE(obeyed(outcome.output), QString());
        QByteArray compact = outcome.json().toJson(QJsonDocument::Compact);
        QVERIFY(compact.contains(u"\u009B2J\u007F\\rmark\u202E\u2066"_qs.toUtf8()));
    }

    void atATerminalOnlyTheProgramsOwnSequencesAreObeyed() {
        QProcess terminal;
        terminal.start("script", {"-qec",
                                  QString("exec ") + LARKSPUR_PROGRAM +
                                      " --sample-folder=" + m_program->path("") + " upgrade heron",
                                  "/dev/null"});
        QString all;
        QTRY_VERIFY_WITH_TIMEOUT((all += QString::fromUtf8(terminal.readAll())).contains("Go on? [y/N] "),
                                 20'000);
        terminal.write("y\n");
        QVERIFY(terminal.waitForFinished());
        all += QString::fromUtf8(terminal.readAll());
        QVERIFY2(all.contains("mark") && all.contains("\u001B[K"), qPrintable(all));
        all.remove(QRegularExpression("\r\u001B\\[K|\u001B\\[\\d+A\r\u001B\\[J|\r+(?=\n)"));
        QCOMPARE(obeyed(all), QString());
    }
};

QTEST_GUILESS_MAIN(HostileOutputTest)
#include "HostileOutput_test.moc"
