#include "inventory/queries/InventoryQueries.h"
#include "tests/support/BrewWorld.h"

#include <QTest>
#include <QThread>

using namespace larkspur;
using namespace larkspur::test;

class InventoryQueriesTest : public QObject {
    Q_OBJECT

    struct World : BrewWorld {
        InventoryQueries queries{brew, preferences, logger};
    };

  private Q_SLOTS:
    void namesMeetAcrossCommands() {
        World world;
        world.shell.answer("leaves", "acme/tools/chatty\n\n  topper \n");
        world.shell.answer("list --pinned", "");
        QCOMPARE(*await(world.queries.leaves()), QSet<QString>({"chatty", "topper"}));
        QVERIFY(await(world.queries.pinned())->isEmpty());
    }

    void thePrefixIsOneFolderOrNone() {
        World world;
        const QByteArray folder = world.folder.path().toUtf8();
        world.shell.answer("--prefix", '\n' + folder + "\n\n");
        QCOMPARE(*await(world.queries.homebrewPrefix()), world.folder.path());
        for (const QByteArray &answer :
             {QByteArray(), QByteArray("Updating...\n" + folder), folder + "\nmore\n",
              QByteArray(folder + "/gone"), QByteArray("."), QByteArray(folder + "/brew")}) {
            world.shell.answer("--prefix", answer);
            const auto prefix = await(world.queries.homebrewPrefix());
            QVERIFY2(!prefix && prefix.error().kind == BrewError::Kind::InvalidOutput, answer.constData());
        }
    }

    void greedyOnlyWhenAsked() {
        World world;
        world.shell.answer("outdated --json=v2", "{\"formulae\":[],\"casks\":[]}");
        world.shell.answer("outdated --json=v2 --greedy-auto-updates",
                           "{\"formulae\":[],\"casks\":[{\"name\":\"x\",\"installed_versions\":[\"1\"],"
                           "\"current_version\":\"2\"}]}");
        QVERIFY(await(world.queries.outdated())->isEmpty());
        world.preferences.set(keys::includeAutoUpdateCasks, true);
        QCOMPARE(await(world.queries.outdated())->size(), 1);
    }

    void failuresKeepTheirMeaning() {
        World world;
        world.shell.answer("info --installed --cask --json=v2", {}, 1, "Error: No casks to list\n");
        QVERIFY(await(world.queries.installedCasks())->isEmpty());
        world.shell.answer("info --installed --json=v2", "{\"formulae\":[");
        QCOMPARE(await(world.queries.installedFormulae()).error().kind, BrewError::Kind::InvalidOutput);
        QVERIFY(world.logText().contains(
            "[Larkspur] JSON decoding error in getInstalledFormulae: Data corrupted at '"));
        world.shell.answer("outdated --json=v2", "nonsense");
        QCOMPARE(await(world.queries.outdated()).error().kind, BrewError::Kind::InvalidOutput);
        QVERIFY(world.logText().contains("brew outdated JSON decode failed: Data corrupted"));
        world.shell.answer("services list --json", {}, 1, "Error: broken\n");
        QCOMPARE(await(world.queries.services()).error(), BrewError::commandFailed("Error: broken"));
        world.shell.answer("info --formula --json=v2 nope", {}, 1,
                           "Error: No available formula with the name \"nope\".\n");
        QCOMPARE(await(world.queries.formulaDetails("nope")).error(), BrewError::packageNotFound("nope"));
    }

    void droppedElementsAreLogged() {
        World world;
        world.shell.answer("info --installed --json=v2",
                           "{\"formulae\":[{\"name\":\"a\"},{\"name\":3}],\"casks\":[]}");
        QCOMPARE(await(world.queries.installedFormulae())->size(), 1);
        QVERIFY(world.logText().contains("Type mismatch: expected string at 'formulae.1.name'"));
        world.shell.answer("tap", "acme/tools\n--eval-all\n");
        world.shell.answer("tap-info --json acme/tools", "[{\"name\":\"acme/tools\"}]");
        QCOMPARE(await(world.queries.taps())->size(), 1);
        QVERIFY(world.logText().contains("\"--eval-all\" is no name of a tap"));
        world.shell.answer("tap", "--eval-all\n"); // then nothing is asked, for that would mean every tap
        QVERIFY(await(world.queries.taps())->isEmpty());
    }

    void hostileWordsReachNoCommand() {
        World world;
        QCOMPARE(await(world.queries.formulaDetails("--prefix")).error().kind,
                 BrewError::Kind::PackageNotFound);
        QVERIFY(await(world.queries.search("--eval-all"))->formulae.isEmpty());
        QVERIFY(world.shell.commands().isEmpty());
    }

    void searchAsksForBothKinds() {
        World world;
        world.shell.answer("search --formula wid", "==> Formulae\nacme/tools/widget\n\n");
        world.shell.answer("search --cask wid", {}, 1, "Error: No formulae or casks found for \"wid\".\n");
        const auto hits = await(world.queries.search(" wid "));
        QCOMPARE(hits->formulae, QStringList{"acme/tools/widget"});
        QVERIFY(hits->casks.isEmpty());
    }

    void noMoreAtOnceThanAllowed() {
        World world;
        world.shell.hold("leaves");
        std::vector<Task<Result<QSet<QString>>>> tasks;
        const int limit = std::max(2, QThread::idealThreadCount());
        for (int i = 0; i < limit + 3; ++i)
            tasks.push_back(world.queries.leaves());
        QCOMPARE(world.shell.running(), limit);
        for (auto &task : tasks) {
            world.shell.release("leaves", "x\n");
            QVERIFY(await(std::move(task)));
        }
        QCOMPARE(world.shell.mostAtOnce(), limit);
    }
};

QTEST_GUILESS_MAIN(InventoryQueriesTest)
#include "InventoryQueries_test.moc"
