#include "core/trees/TreeScan.h"
#include "tests/support/Await.h"
#include "tests/support/Processes.h"
#include "tests/support/TerminalSession.h"

#include <QDir>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

namespace {

int wanted(const char *variable, int usual) {
    const int number = qEnvironmentVariableIntValue(variable);
    return number > 0 ? number : usual;
}

void writeText(const char *path, const QByteArray &text) {
    const int file = ::open(path, O_WRONLY);
    [[maybe_unused]] const auto count =
        ::write(file, text.constData(), static_cast<std::size_t>(text.size()));
    ::close(file);
}

/// From now on this process can mount volumes that nobody else sees.
bool enterOwnMounts() {
    const QByteArray user = QByteArray::number(::getuid());
    const QByteArray group = QByteArray::number(::getgid());
    if (::unshare(CLONE_NEWNS) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return false;
        writeText("/proc/self/setgroups", "deny");
        writeText("/proc/self/uid_map", "0 " + user + " 1");
        writeText("/proc/self/gid_map", "0 " + group + " 1");
    }
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

} // namespace

/// Long series of accidents. Every operation meets each once by default; KILLS=1000 and FULL=1 for a run at
/// length.
class CampaignsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Program> m_program;
    QTemporaryDir m_start;  ///< the sample before each accident
    QSet<QString> m_linked; ///< what was linked then
    QStringList m_pinned;
    QStringList m_applications;
    QStringList m_work;
    const QByteArray m_password = "Tr0ub4dor-and-3";

    static void copy(const QString &from, const QString &to) {
        if (QProcess::execute("cp", {"-a", from + "/.", to}) != 0)
            qFatal("the sample cannot be copied");
    }
    QString folder() const { return m_program->path("."); }
    Program::Outcome run(const QString &line) { return m_program->run(line.split(' ')); }
    QStringList linked() const {
        return QDir(m_program->path("homebrew/var/homebrew/linked"))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    }
    QStringList pinned() const {
        QStringList names;
        for (const char *records : {"pinned", "pinned_casks"})
            names += QDir(m_program->path(QString("homebrew/var/homebrew/") + records))
                         .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
        return names;
    }
    QStringList applications() const {
        return QDir(m_program->path("Applications")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    }
    /// What the accident has left of brew comes to its end by itself.
    bool waitForBrew() const {
        QElapsedTimer clock;
        clock.start();
        // Twice in a row: a process on its way from one program to the next has no words for a moment.
        for (int seenNone = 0; seenNone < 2 && clock.elapsed() < 60'000;) {
            seenNone = processesWith(m_program->brew().toUtf8()).isEmpty() ? seenNone + 1 : 0;
            QTest::qWait(20);
        }
        return clock.elapsed() < 60'000;
    }
    void startAgain() {
        for (const char *part : {"homebrew", "Applications", "data", "Trash"}) {
            QDir content(m_program->path(part));
            if (content.exists() && content.path() != m_program->path("data"))
                content.removeRecursively();
            for (const QString &name :
                 content.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
                if (!QDir(content.filePath(name)).removeRecursively())
                    QFile::remove(content.filePath(name));
        }
        copy(m_start.path(), m_program->path("."));
    }

    bool hasSecret() const {
        const QFileInfo secret(m_program->path("data/.askpass-secret"));
        return secret.isSymLink() || secret.exists();
    }

    /// Empty, or what is not as it should be after the next start.
    QString damage() {
        const QDir data(m_program->path("data"));
        if (hasSecret())
            return "a password is left";
        if (const QStringList files = m_program->filesWith(m_password); !files.isEmpty())
            return "the password stands in " + files.join(' ');
        if (const QStringList notes = QDir(data.filePath("CrashNotes")).entryList(QDir::Files);
            !notes.isEmpty())
            return "a note stands: " + notes.join(' ');
        const auto hidden =
            QDir(m_program->path("Applications")).entryList({".larkspur*"}, QDir::Dirs | QDir::Hidden);
        if (!hidden.isEmpty())
            return "hidden: " + hidden.join(' ');
        if (QFile::exists(m_program->path("homebrew/var/larkspur")))
            return "a rollback is half done";
        if (const QStringList backups =
                QDir(m_program->path("homebrew/Cellar/tern")).entryList({"*.reinstall"});
            !backups.isEmpty())
            return "a reinstallation is half done: " + backups.join(' ');
        for (const QString &name : m_applications)
            if (!QFile::exists(m_program->path("Applications/" + name + "/Contents/Info.plist")))
                return name + " is gone";
        for (const QString &name : m_linked) {
            const QString keg = QFileInfo(m_program->path("homebrew/opt/" + name)).canonicalFilePath();
            if (!linked().contains(name) || !QFile::exists(keg + "/INSTALL_RECEIPT.json"))
                return name + " is not linked or not whole";
        }
        if (pinned() != m_pinned)
            return "pinned is: " + pinned().join(' ');
        QDirIterator files(data.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            QFile file(path);
            if (path.endsWith(".new") || path.contains("/.partial-") || path.contains("/.discarded-"))
                return "a file in the making is left: " + path;
            if (path.endsWith(".json") && file.open(QIODevice::ReadOnly) &&
                QJsonDocument::fromJson(file.readAll()).isNull() && !path.contains("/PreservedKegs/"))
                return "not whole: " + path;
        }
        return damageOfKegs();
    }

    /// Every copy is whole and in the index, and the index names no other.
    QString damageOfKegs() {
        if (const auto verified = run("kegs verify"); verified.status != 0)
            return "kegs: " + verified.output + verified.errors;
        const QDir kegs(m_program->path("data/PreservedKegs"));
        QStringList entered;
        const auto listed = run("kegs list --json");
        for (const QJsonValue &entry : listed.json().array())
            entered.append(entry["formula"].toString() + '/' + entry["version"].toString());
        QStringList copies;
        for (const QString &formula : kegs.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            for (const QString &version :
                 QDir(kegs.filePath(formula)).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
                copies.append(formula + '/' + version);
        entered.sort();
        copies.sort();
        return entered == copies ? QString()
                                 : "the index has " + entered.join(' ') + ", there is " + copies.join(' ');
    }

  private Q_SLOTS:
    void initTestCase() {
        m_program = std::make_unique<Program>();
        QCOMPARE(run("status").status, 0);
        m_program->setPassword(m_password);
        // Kegs are preserved, a version was rolled back and one is pinned; restore points lead here and back.
        for (const char *line : {"snapshot take start", "upgrade heron", "upgrade quillmark",
                                 "rollback heron 8.10.0", "install dovetail", "snooze sparrowgit"})
            QVERIFY2(run(line).status == 0, line);
        const QString point = run("snapshot list --json").json().array().last().toObject()["id"].toString();
        m_work = QStringList{"install inkcap",
                             "upgrade heron",
                             "upgrade --yes kelp",
                             "upgrade --all --yes",
                             "reinstall --cask tidepool",
                             "upgrade granite-vault --cask",
                             "rollback quillmark 3.5.0",
                             "snapshot restore --roll-back --remove-added " + point,
                             "snapshot take another",
                             "uninstall foliograph --cask",
                             "reinstall tern"};
        const QStringList all = linked();
        m_linked = QSet<QString>(all.begin(), all.end());
        m_linked.remove("dovetail"); // the restore removes it
        m_pinned = pinned();
        QVERIFY(!m_pinned.isEmpty() && run("kegs list --json").json().array().size() > 1);
        m_applications = applications();
        m_applications.removeAll("Foliograph.app");
        for (const char *part : {"homebrew", "Applications", "data"}) {
            QDir().mkpath(m_start.filePath(part));
            copy(m_program->path(part), m_start.filePath(part));
        }
    }

    void killedAtAnyMoment() {
        const int kills = wanted("KILLS", static_cast<int>(m_work.size()));
        QRandomGenerator random(static_cast<quint32>(wanted("SEED", 7)));
        QHash<QString, qint64> lengths;
        int killed = 0;
        for (int i = 0; i < kills; ++i) {
            startAgain();
            const QString line = m_work[(wanted("ONLY", 0) > 0 ? wanted("ONLY", 0) : i) % m_work.size()];
            if (!lengths.contains(line)) {
                QElapsedTimer clock;
                clock.start();
                run(line);
                lengths.insert(line, clock.elapsed());
                startAgain();
            }
            const auto process = m_program->start(line.split(' '));
            QVERIFY(process->waitForStarted());
            QTest::qWait(random.bounded(static_cast<int>(lengths.value(line))));
            const int whom = random.bounded(3); // the program, its brew, or both
            const bool wasRunning = process->state() == QProcess::Running;
            if (whom != 1)
                process->kill();
            if (whom != 0)
                killProcessesWith(m_program->brew().toUtf8());
            killed += wasRunning ? 1 : 0;
            if (!wasRunning) // the machine has become faster since it was timed
                lengths[line] = qMax(qint64(2), lengths.value(line) * 2 / 3);
            QVERIFY(process->state() == QProcess::NotRunning || process->waitForFinished(60'000));
            QVERIFY2(waitForBrew(), qPrintable("a brew does not end: " + line));
            // The next operation puts right what was left.
            const auto next = run("unpin heron");
            const QString found = damage();
            const QString said = QString::fromUtf8(process->readAllStandardOutput());
            QVERIFY2(found.isEmpty(), qPrintable(QString("kill %1 (%2, %3): %4\n%5\n%6")
                                                     .arg(i)
                                                     .arg(line)
                                                     .arg(whom)
                                                     .arg(found, said, next.output + next.errors)));
        }
        qInfo("%d of %d runs were killed under way", killed, kills);
        QVERIFY(killed > 0);
    }

    void killedWithThePassword() {
        const int kills = qMax(3, wanted("KILLS", 0) / static_cast<int>(m_work.size()));
        const QByteArray program = "larkspur --sample-folder=" + m_program->path("").toUtf8();
        QRandomGenerator random(static_cast<quint32>(wanted("SEED", 7)));
        int killed = 0;
        for (int i = 0; i < kills; ++i) {
            startAgain();
            m_program->replaceBrew("[ -z \"$LARKSPUR_ASKPASS_PASSWORD\" ] || sleep 0.5\nexec -a " +
                                   m_program->brew().toUtf8() + " $REAL \"$@\"\n");
            TerminalSession session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
            QVERIFY2(session.prompt(), session.all());
            session.type(m_password);
            QVERIFY2(spinUntil([this] { return hasSecret(); }), session.all());
            QTest::qWait(i == 0 ? 0 : random.bounded(800));
            killed += hasSecret() ? 1 : 0;
            const int whom = i % 3; // the program, its brew, or both
            if (whom != 1)
                killProcessesWith(program);
            if (whom != 0)
                killProcessesWith(m_program->brew().toUtf8());
            session.finish();
            QVERIFY2(waitForBrew(), "a brew does not end");
            run("unpin heron");
            const QString found = damage();
            QVERIFY2(found.isEmpty(), qPrintable(QString("kill %1 (%2): ").arg(i).arg(whom) + found));
        }
        qInfo("%d of %d were killed while the password stood in a file", killed, kills);
        QVERIFY(killed > 0);
    }

    void theDataVolumeIsFullAtAnyWrite() {
        if (!enterOwnMounts())
            QSKIP("no volume can be mounted here");
        startAgain();
        const QByteArray data = m_program->path("data").toUtf8();
        if (::mount("tmpfs", data.constData(), "tmpfs", 0, "size=24m") != 0)
            QSKIP("no volume can be mounted here");
        const bool isLong = wanted("FULL", 0) > 0;
        const int step = isLong ? 1 : 60;
        int full = 0;
        for (int i = 0; i < m_work.size(); ++i)
            for (int pages = isLong ? 0 : i * 7 % 20; pages < 60; pages += step) {
                const QString &line = m_work[i];
                startAgain();
                QFile filler(m_program->path("data/filler"));
                QVERIFY(filler.open(QIODevice::WriteOnly));
                while (filler.write(QByteArray(4096, 'f')) == 4096 && filler.flush()) {
                }
                filler.resize(filler.size() / 4096 * 4096 - pages * 4096);
                filler.close();
                const auto outcome = run(line);
                full += outcome.status != 0 ? 1 : 0;
                QFile::remove(filler.fileName());
                const auto next = run("unpin heron");
                const QString found = damage();
                QVERIFY2(found.isEmpty(), qPrintable(QString("%1 with %2 pages: %3\n%4\n%5")
                                                         .arg(line)
                                                         .arg(pages)
                                                         .arg(found, outcome.output + outcome.errors,
                                                              next.output + next.errors)));
                // What the person had is still there.
                QVERIFY(run("snoozed").output.contains("sparrowgit"));
                QVERIFY(run("snapshot list --json").json().array().size() >= 3);
                QCOMPARE(run("kegs verify").status, 0);
            }
        qInfo("%d runs met a full volume and said so", full);
        ::umount(data.constData());
        QVERIFY(full > 0);
    }
};

QTEST_GUILESS_MAIN(CampaignsTest)
#include "Campaigns_test.moc"
