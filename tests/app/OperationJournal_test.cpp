#include "app/OperationJournal.h"

#include "tests/support/OperationWorld.h"
#include "userdata/UserDataManager.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class OperationJournalTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void whatIsDoneIsWrittenDown() {
        OperationWorld world;
        UserDataManager userData(world.path("data"), world.logger);
        const OperationJournal journal(world.center, userData);
        world.addFormula("a", "1");
        world.addFormula("c", "1");
        world.shell.answer("uninstall a", {}, 1, "Error: needed\n");
        world.shell.answer("uninstall --cask b", {});
        world.shell.answer("reinstall c", "fine\n");
        world.shell.answer("pin c", {});
        world.shell.answer("update", "Already up-to-date.\n");
        world.perform("uninstall", {{"a", false}, {"b", true}});
        world.perform("reinstall", {{"c", false}});
        world.perform("pin", {{"c", false}});               // changes nothing that is installed
        world.perform("upgrade", {{"c", false, "1", "1"}}); // nor does this
        world.perform(updateHomebrew());
        QStringList lines;
        for (const HistoryEntry &entry : userData.history())
            lines.prepend(historyActionName(entry.action) + ' ' + entry.packageName +
                          (entry.isCask ? " cask" : "") + (entry.success ? "" : " failed"));
        QCOMPARE(lines,
                 QStringList({"uninstall a failed", "uninstall b cask", "install c", "update Homebrew"}));
    }
};

QTEST_GUILESS_MAIN(OperationJournalTest)
#include "OperationJournal_test.moc"
