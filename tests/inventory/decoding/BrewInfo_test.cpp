#include "inventory/decoding/BrewInfoDecoder.h"
#include "inventory/decoding/Conversion.h"

#include "tests/support/Json.h"

#include <QTest>

using namespace larkspur;
using test::asJson;

namespace {

QByteArray document(const QByteArray &formulae, const QByteArray &casks) {
    return "{\"formulae\":[" + formulae + "],\"casks\":[" + casks + "]}";
}

const QByteArray formula = asJson(
    "{'name':'chatty','full_name':'acme/tools/chatty','tap':'acme/tools','desc':'Tiny 🍺 tool',"
    "'license':null,'homepage':'https://example.com','versions':{'stable':'1.2','head':null,'bottle':false},"
    "'urls':{'stable':{'url':'https://example.com/c.tgz','tag':null}},'dependencies':['acme/tools/"
    "liblow'],'caveats':null,"
    "'bottle':{},'installed':[{'version':'1.9','installed_on_request':true,'time':100},"
    "{'version':'1.10','installed_on_request':false,'time':200}],'unknown':{'deep':[1,2,{'x':null}]}}");

QByteArray cask(const char *token, const char *version) {
    return QByteArray("{\"token\":\"") + token + "\",\"name\":[\"N\"],\"version\":" + version + "}";
}

} // namespace

class BrewInfoTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void formulaOfToday() {
        const auto response = decodeBrewInfo(document(formula, {}));
        QVERIFY(response);
        const Formula found = toFormula(response->formulae.elements.first());
        QCOMPARE(found.name, "chatty");
        QCOMPARE(found.fullName, "acme/tools/chatty");
        QCOMPARE(found.version, "1.10");      // the newest, by number
        QVERIFY(found.installedAsDependency); // follows from "not on request"
        QCOMPARE(found.installedOn->toSecsSinceEpoch(), 200);
        QCOMPARE(found.sourceURL, "https://example.com/c.tgz");
        QCOMPARE(found.description, "Tiny 🍺 tool");
        QVERIFY(!found.license && !found.caveats);
        QCOMPARE(found.dependencies, QStringList{"acme/tools/liblow"});
    }

    void formulaOfOlderHomebrew() {
        const auto response = decodeBrewInfo(
            document(asJson("{'name':'a','full_name':'a','versions':{'stable':'3'},"
                            "'urls':{'head':{'url':'https://"
                            "h'}},'installed':[{'version':'2','installed_as_dependency':true,'time':null}]},"
                            "{'name':'b','installed':null,'versions':{'stable':'3'},'dependencies':null}"),
                     {}));
        QVERIFY(response);
        const Formula first = toFormula(response->formulae.elements[0]);
        QVERIFY(first.installedAsDependency && !first.installedOn);
        QCOMPARE(first.sourceURL, "https://h");
        const Formula second = toFormula(response->formulae.elements[1]);
        QCOMPARE(second.version, "3"); // not installed: the stable one
        QCOMPARE(second.fullName, "b");
    }

    void aBadElementDropsOnlyItself() {
        const auto response = decodeBrewInfo(
            document(asJson("{'name':'good'},{'name':'bad','installed':[{'version':7}]},{'desc':'nameless'},"
                            "3,{'name':'also'}"),
                     cask("one", "\"1\"") + "," + cask("two", "2") + "," + cask("three", "\"3\"")));
        QVERIFY(response);
        QCOMPARE(response->formulae.elements.size(), 2);
        QCOMPARE(response->formulae.elements[1].name, "also");
        QCOMPARE(response->formulae.failures,
                 QStringList({"Type mismatch: expected string at 'formulae.1.installed.0.version'",
                              "Key 'name' not found at 'formulae.2'",
                              "Type mismatch: expected object at 'formulae.3'"}));
        QCOMPARE(response->casks.elements.size(), 2);
        QCOMPARE(response->casks.elements[1].token, "three");
        QCOMPARE(response->casks.failures,
                 QStringList{"Type mismatch: expected string at 'casks.1.version'"});
    }

    void caskOfToday() {
        const auto response = decodeBrewInfo(document(
            {}, asJson("{'token':'macthing','full_token':'acme/tools/macthing',"
                       "'name':['Mac "
                       "Thing','MT'],'version':'2.5.1,1234','installed':'2.4','caveats_rosetta':true,'"
                       "disabled':false,"
                       "'bundle_short_version':'2.4','bundle_version':'240','auto_updates':null,'artifacts':["
                       "{'uninstall':[{'quit':'com.example.macthing','launchctl':['com.example.macthing."
                       "helper'],'delete':'/Applications/X.app',"
                       "'signal':[['TERM','com.example.sig.nal']],'script':{'executable':'a','args':['b'],'"
                       "sudo':true}}]},"
                       "{'app':['Mac Thing.app'],'target':'/Applications/Mac Thing.app'},"
                       "{'app':['Helper.app',{'target':'Mac Thing Helper.app'}]},"
                       "{'preflight':null},'a string',{'binary':['pretty'],'target':'/x/bin/pretty'},"
                       "{'zap':[{'trash':['~/Library/Preferences/com.example.macthing.plist','~/Library/"
                       "Caches/com.example.other'],'rmdir':'~/x'}]}]}")));
        QVERIFY(response);
        const CaskJSON json = response->casks.elements.first();
        QCOMPARE(json.appNames, QStringList({"Mac Thing.app", "Mac Thing Helper.app"}));
        QCOMPARE(json.bundleIDHints,
                 QStringList({"com.example.macthing", "com.example.macthing.helper", "com.example.other"}));
        const Cask found = toCask(json);
        QCOMPARE(found.version, "2.4"); // what is installed
        QCOMPARE(found.actualVersion, "2.4");
        QVERIFY(found.requiresRosetta);
    }

    void caskWithLittle() {
        const auto response =
            decodeBrewInfo(document({}, asJson("{'token':'thin','name':[],'version':null,'url':'','caveats_"
                                               "rosetta':null,'disabled':null,'artifacts':null}")));
        QVERIFY(response);
        const Cask found = toCask(response->casks.elements.first());
        QVERIFY(!found.requiresRosetta && found.version.isEmpty() && found.name.isEmpty());
    }

    void noticesInFrontAreSkipped() {
        const QByteArray notice = "==> Auto-updated Homebrew! [see notes]\nWarning: {x} is deprecated\n";
        const auto response = decodeBrewInfo(notice + document(formula, {}));
        QVERIFY(response);
        QCOMPARE(response->formulae.elements.size(), 1);
    }

    void bytesThatAreNoTextDoNotLoseTheList() {
        const auto response = decodeBrewInfo(document("{\"name\":\"a\",\"desc\":\"x\xff\xfey\"}", {}));
        QVERIFY(response);
        QCOMPARE(response->formulae.elements.first().desc, "x\uFFFD\uFFFDy");
    }

    void anythingElseIsAnError_data() {
        QTest::addColumn<QByteArray>("bytes");
        for (const char *bytes : {"", "[]", "null", "{\"formulae\":", "{\"formulae\":[{\"name\":\"a\"}",
                                  "Error: no\n", "{\"formulae\":3}", "{\"formulae\":[}", "\x00\x01"})
            QTest::newRow(bytes) << QByteArray(bytes);
        QTest::newRow("deep") << QByteArray(100'000, '[');
    }
    void anythingElseIsAnError() {
        QFETCH(QByteArray, bytes);
        const auto response = decodeBrewInfo(bytes);
        QVERIFY(!response);
        QVERIFY(!response.error().description().isEmpty());
    }

    void cutAnywhereItNeverInventsPackages() {
        const QByteArray whole = document(formula + "," + formula, cask("one", "\"1\""));
        for (qsizetype length = 0; length < whole.size(); ++length) {
            const auto response = decodeBrewInfo(whole.first(length));
            QVERIFY2(!response, qPrintable(QString("accepted after %1 bytes").arg(length)));
        }
        QVERIFY(decodeBrewInfo(whole));
    }
};

QTEST_GUILESS_MAIN(BrewInfoTest)
#include "BrewInfo_test.moc"
