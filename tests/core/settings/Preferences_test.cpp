#include "core/lock/LockFile.h"
#include "tests/support/Fixture.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <cerrno>

using namespace larkspur;
using namespace larkspur::test;

namespace {

/// A disk that takes nothing while it is full.
class FullDisk final : public FileCalls {
  public:
    explicit FullDisk(const bool &isFull)
        : m_isFull(isFull) {}
    int sync(int file) const override {
        errno = ENOSPC;
        return m_isFull ? -1 : FileCalls::sync(file);
    }

  private:
    const bool &m_isFull;
};

} // namespace

class PreferencesTest : public QObject {
    Q_OBJECT

    struct World {
        QTemporaryDir folder;
        bool isFull = false;

        QString path() const { return folder.filePath("preferences.json"); }
        std::unique_ptr<Preferences> open() const {
            return std::make_unique<Preferences>(
                std::make_unique<FilePreferenceStore>(folder.path(), std::make_unique<FullDisk>(isFull)));
        }
    };

  private Q_SLOTS:
    void oddValuesReadAsTheirDefault() {
        const World world;
        const auto preferences = world.open();
        QSignalSpy changes(preferences.get(), &Preferences::changed);
        QVERIFY(!preferences->boolean("missing"));
        QVERIFY(preferences->boolean("missing", true));
        preferences->set("list", QStringList{"a"});
        QCOMPARE(preferences->strings("list"), QStringList{"a"});
        QCOMPARE(preferences->strings("missing"), QStringList());
        QCOMPARE(preferences->integer("list", 7), 7);
        preferences->set("list", QStringList{"a"}); // nothing new
        preferences->set("list", QStringList{"a", "b"});
        QCOMPARE(changes.count(), 2);
    }

    void everyKindOfValueComesBack() {
        const World world;
        const QByteArray bytes("\x00\xff)\"", 4);
        const auto first = world.open();
        first->set("yes", true);
        first->set("large", qint64{5'000'000'000});
        first->set("text", QStringLiteral("@ä, \"b\"; \\\n"));
        first->set("list", QStringList{"a,b", ""});
        first->set("none", QStringList());
        first->set("bytes", bytes);
        const auto next = world.open();
        QVERIFY(next->boolean("yes"));
        QCOMPARE(next->integer("large", 0), 5'000'000'000);
        QCOMPARE(next->string("text"), QStringLiteral("@ä, \"b\"; \\\n"));
        QCOMPARE(next->strings("list"), QStringList({"a,b", ""}));
        QCOMPARE(next->strings("none"), QStringList());
        QCOMPARE(next->bytes("bytes"), bytes);
        QSignalSpy changes(next.get(), &Preferences::changed);
        next->set("list", QStringList{"a,b", ""});
        next->set("bytes", bytes);
        QCOMPARE(changes.count(), 0);
    }

    void earlierFilesAreReadAndStay() {
        const World world;
        const QString earlier = world.folder.filePath("preferences.ini");
        {
            QSettings settings(earlier, QSettings::IniFormat);
            settings.setValue("no", false);
            settings.setValue("large", qint64{5'000'000'000});
            settings.setValue("list", QStringList{"a,b", "c"});
            settings.setValue("bytes", QByteArray("\x01\xd9\xd0\xcb\x00", 5));
        }
        const QString text = Fixture::read(earlier);
        for (int i = 0; i < 2; ++i) { // from the earlier file, then from the new one
            const auto preferences = world.open();
            QVERIFY(!preferences->boolean("no", true));
            QCOMPARE(preferences->integer("large", 0), 5'000'000'000);
            QCOMPARE(preferences->strings("list"), QStringList({"a,b", "c"}));
            QCOMPARE(preferences->bytes("bytes"), QByteArray("\x01\xd9\xd0\xcb\x00", 5));
            preferences->set("new", 1);
            QVERIFY(QFile::exists(world.path()));
        }
        QCOMPARE(Fixture::read(earlier), text);
    }

    void anEarlierFileThatCannotBeReadIsNotGivenUp() {
        const World world;
        QVERIFY(QDir().mkdir(world.folder.filePath("preferences.ini")));
        const auto preferences = world.open();
        QVERIFY(preferences->readFailure().contains("preferences.ini"));
        QSignalSpy told(preferences.get(), &Preferences::choiceNotSaved);
        preferences->set("a", 1); // a new file would have the earlier one never looked at again
        QCOMPARE(told.count(), 1);
        QVERIFY(!QFile::exists(world.path()));
    }

    void aFullDiskLeavesTheOldFileAndIsTold() {
        World world;
        const auto preferences = world.open();
        preferences->set("kept", "old");
        const QString text = Fixture::read(world.path());
        QSignalSpy failures(preferences.get(), &Preferences::notSaved);
        QSignalSpy told(preferences.get(), &Preferences::choiceNotSaved);
        world.isFull = true;
        preferences->set("kept", "new");
        preferences->remember("noted", 5);
        QCOMPARE(failures.count(), 2);
        QCOMPARE(told.count(), 1);
        QVERIFY(told.first().first().toString().contains("No space left"));
        QCOMPARE(Fixture::read(world.path()), text);
        QCOMPARE(preferences->string("kept"), "new"); // for this run
        preferences->reload();
        QCOMPARE(preferences->string("kept"), "new");
        world.isFull = false;
        preferences->set("other", 1);
        QCOMPARE(world.open()->string("kept"), "new"); // stored with the next
        QCOMPARE(world.open()->integer("noted", 0), 5);
    }

    void twoProgramsKeepEachOthersChoices() {
        const World world;
        const auto window = world.open();
        const auto terminal = world.open();
        window->set("a", 1);
        terminal->set("b", 2); // it has read the file before that
        window->set("c", 3);
        QCOMPARE(window->integer("b", 0), 2);
        QSignalSpy changes(terminal.get(), &Preferences::changed);
        terminal->reload();
        QCOMPARE(changes.count(), 1);
        QCOMPARE(terminal->integer("c", 0), 3);
        terminal->set("a", 9);
        window->set("a", 1); // as this program remembers it; the file says otherwise
        QCOMPARE(world.open()->integer("a", 0), 1);
        QVERIFY(!QFile::exists(world.path() + ".lock"));
        terminal->set("a", 7);
        window->set("d", 4); // has nothing more to say about the first
        QCOMPARE(world.open()->integer("a", 0), 7);
    }

    void withoutTheLockNothingIsWritten() {
        const World world;
        const auto preferences = world.open();
        preferences->set("a", 1);
        QSignalSpy told(preferences.get(), &Preferences::choiceNotSaved);
        const auto held = LockFile::tryTake(world.path() + ".lock");
        preferences->set("a", 2); // waits for a while first
        QCOMPARE(told.count(), 1);
        QCOMPARE(world.open()->integer("a", 0), 1);
    }

    void aLimitThatWasLostIsNotTheDefault() {
        const World world;
        QCOMPARE(world.open()->knownInteger("limit", 30), 30);
        world.open()->set("limit", "many");
        QVERIFY(!world.open()->knownInteger("limit", 30));
        for (const char *damaged : {"", "[]", "{\"limit\":0,"}) {
            QFile::remove(world.path() + ".unreadable");
            Fixture::write(world.path(), damaged);
            QVERIFY(world.open()->damage().contains(world.path() + " is damaged"));
            QVERIFY(!world.open()->knownInteger("limit", 30));
            world.open()->remember("size", 1); // a whole file again, and still not what was chosen
            QVERIFY(world.open()->damage().contains(world.path() + ".unreadable"));
            QVERIFY(!world.open()->knownInteger("limit", 30));
        }
        world.open()->set("limit", 7);
        QCOMPARE(world.open()->knownInteger("limit", 30), 7);
        QFile::remove(world.path() + ".unreadable");
        QCOMPARE(world.open()->knownInteger("other", 5), 5);
        QVERIFY(world.open()->damage().isEmpty());
    }

    void aFileThatNobodyUnderstandsIsKept() {
        const World world;
        Fixture::write(world.path(), "{\"a\":1,");
        const auto preferences = world.open();
        QCOMPARE(preferences->integer("a", 0), 0);
        QVERIFY(preferences->readFailure().contains("damaged"));
        preferences->set("b", 2);
        QCOMPARE(Fixture::read(world.path() + ".unreadable"), "{\"a\":1,");
        QCOMPARE(world.open()->integer("b", 0), 2);
        Fixture::write(world.path(), "damaged again");
        preferences->set("b", 4);
        QCOMPARE(Fixture::read(world.path() + ".unreadable"), "{\"a\":1,"); // the oldest stays
        QVERIFY(QFile::remove(world.path()) && QDir().mkdir(world.path()));
        QVERIFY(world.open()->readFailure().contains("preferences.json"));
        QSignalSpy told(preferences.get(), &Preferences::choiceNotSaved);
        preferences->set("b", 3); // what cannot even be read is not replaced
        QCOMPARE(told.count(), 1);
    }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "Preferences_test.moc"
