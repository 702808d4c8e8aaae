#include "inventory/decoding/Conversion.h"
#include "inventory/decoding/ListDecoders.h"

#include "tests/support/Json.h"

#include <QTest>

using namespace larkspur;
using test::asJson;

class ListsTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void outdated() {
        const auto response = decodeOutdated(
            asJson("{'formulae':[{'name':'acme/tools/chatty','installed_versions':['1.0','1.1'],"
                   "'current_version':'1.2','pinned':true,'pinned_version':'1.1'},{'name':'x','current_"
                   "version':null}],"
                   "'casks':[{'name':'pretty','installed_versions':['1'],'current_version':'2'}]}"));
        QVERIFY(response);
        const OutdatedPackage formula = toOutdatedPackage(response->formulae.elements.first());
        QCOMPARE(formula.name, "chatty"); // meets the short names of other commands
        QCOMPARE(formula.fullName, "acme/tools/chatty");
        QVERIFY(formula.pinned && !formula.isCask);
        QVERIFY(toOutdatedPackage(response->casks.elements.first()).isCask);
        QCOMPARE(response->formulae.failures,
                 QStringList{"Value not found: expected string at 'formulae.1.current_version'"});
    }

    void aMissingListOfOutdatedPackagesIsNoEmptyOne() {
        QVERIFY(decodeOutdated("{\"formulae\":[],\"casks\":[]}"));
        for (const char *text : {"{\"formulae\":[]}", "{\"casks\":[]}", "{\"formulae\":[],\"casks\":null}"})
            QVERIFY2(!decodeOutdated(text), text);
    }

    void services() {
        const auto list =
            decodeServices(asJson("[{'name':'a','status':'started','user':'me','file':'/f','exit_code':0},"
                                  "{'name':'b','status':'other','user':null,'file':null,'exit_code':null},{'"
                                  "name':'c','status':'error','exit_code':78},"
                                  "{'name':'d','status':'none'},{'name':'e','status':'scheduled'},{'name':'f'"
                                  ",'status':'stopped'},{'name':'g'}]"));
        QVERIFY(list);
        QList<ServiceStatus> found;
        for (const BrewServiceInfo &service : list->elements)
            found.append(service.status);
        QCOMPARE(found,
                 QList<ServiceStatus>({ServiceStatus::Running, ServiceStatus::Unknown, ServiceStatus::Error,
                                       ServiceStatus::None, ServiceStatus::Scheduled, ServiceStatus::Stopped,
                                       ServiceStatus::Unknown}));
        QCOMPARE(list->elements[2].exitCode, 78);
        QVERIFY(!list->elements[1].exitCode && !list->elements[1].user);
        QVERIFY(decodeServices("[]")->elements.isEmpty());
        QVERIFY(!decodeServices("{}"));
    }

    void tapsCountTheirListsWhereHomebrewDoesNot() {
        const auto list = decodeTaps(
            asJson("[{'name':'acme/tools','user':'acme','repo':'tools','path':'/p','installed':true,"
                   "'official':false,'trusted':true,'formula_names':['acme/tools/a','acme/tools/"
                   "b'],'cask_tokens':['c'],"
                   "'command_files':[],'remote':null},{'name':'old/"
                   "tap','formula_count':7,'formula_names':['x'],'remote':'https://r'}]"));
        QVERIFY(list);
        QCOMPARE(list->elements[0].formulaCount, 2);
        QCOMPARE(list->elements[0].caskCount, 1);
        QCOMPARE(list->elements[0].isTrusted, true);
        QVERIFY(!list->elements[0].remote);
        QCOMPARE(list->elements[1].formulaCount, 7);
        QVERIFY(!list->elements[1].isTrusted.has_value());
    }

    void trust() {
        const auto state = decodeTrust(asJson(
            "{'taps':['Acme/Tools','https://git.example.com/x'],'formulae':[],'casks':null,'commands':[]}"));
        QVERIFY(state);
        QCOMPARE(state->taps, QSet<QString>({"acme/tools", "https://git.example.com/x"}));
        QVERIFY(!decodeTrust("Error: Unknown command: trust"));
    }
};

QTEST_GUILESS_MAIN(ListsTest)
#include "Lists_test.moc"
