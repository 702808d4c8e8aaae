#include "core/process/ScriptCommandLine.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTest>

using namespace larkspur;

class ScriptCommandLineTest : public QObject {
    Q_OBJECT

    /// The line's command evaluated twice, as on the system: by the shell that starts `script` and by the one
    /// that `script` starts.
    static QString evaluated(const QString &shell, const QString &commandLine) {
        QProcess process;
        process.start(shell, {"-c", "exec " + shell + " -c " + commandLine.section(" -c ", 1)});
        if (!process.waitForFinished())
            qFatal("%s has not ended", qPrintable(shell));
        return QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
    }

  private Q_SLOTS:
    void plainWordsStayAsTheyAre() {
        QCOMPARE(
            scriptCommandLine("/opt/homebrew/bin/brew", {"upgrade", "--cask", "--appdir=/Apps", "c++@1.2_3",
                                                         "acme/tap/x-y", "https://a.b:1/c,d"}),
            "/usr/bin/script -q /dev/null /bin/zsh -c '/opt/homebrew/bin/brew upgrade --cask "
            "--appdir=/Apps c++@1.2_3 acme/tap/x-y https://a.b:1/c,d'");
        QCOMPARE(scriptCommandLine("/bin/brew", {}, "stty rows 40; "),
                 "/usr/bin/script -q /dev/null /bin/zsh -c 'stty rows 40; /bin/brew'");
    }

    void everyWordArrivesAsItIs_data() {
        QTest::addColumn<QString>("shell");
        for (const char *name : {"sh", "bash", "zsh"})
            if (const QString path = QStandardPaths::findExecutable(name); !path.isEmpty())
                QTest::newRow(name) << path;
    }
    void everyWordArrivesAsItIs() {
        QFETCH(QString, shell);
        const QStringList words{"plain",      "$(echo hit)", "`echo hit`",
                                "a;echo hit", "a&&echo hit", "a|echo hit",
                                ">/hit",      "$HOME",       "~",
                                "~root",      "=ls",         "--a==ls",
                                "*",          "/b?n",        "[a-z]",
                                "{a,b}",      "it's",        "''",
                                "\"q\"",      "back\\slash", "#no",
                                "!1",         "^a^b",        "two words",
                                "",           " ",           "tab\there",
                                "line\nend",  "-n",          "größe",
                                "a=~:~b",     "%1",          "'$(echo hit)'",
                                "(x)"};
        const QString line = scriptCommandLine("/usr/bin/printf", QStringList{"<%s>"} + words);
        QCOMPARE(evaluated(shell, line), '<' + words.join("><") + '>');
    }
};

QTEST_GUILESS_MAIN(ScriptCommandLineTest)
#include "ScriptCommandLine_test.moc"
