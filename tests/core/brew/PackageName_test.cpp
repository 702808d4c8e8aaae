#include "core/brew/PackageName.h"

#include <QTest>

using namespace larkspur;

class PackageNameTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void validity_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("valid");
        for (const char *name :
             {"wget", "libsigc++@2", "python@3.13", "acme/tools/chatty", "0-ad", "gtk+3", "@scoped"})
            QTest::newRow(name) << name << true;
        for (const char *name : {"",       "-x",     "--force",   "a b",       "a;rm",
                                 "a\nb",   "../x",   "a/b",       "a/b/c/d",   "/bin/sh",
                                 "$HOME",  "a'b",    "`x`",       "./x.rb",    "a/-b/c",
                                 "-a/b/c", "wget\n", "recipe.rb", "Recipe.RB", "x--1.0.bottle.tar.gz",
                                 "x.json", ".",      "..",        "@/../x"})
            QTest::newRow(qPrintable(QString("bad <%1>").arg(name))) << name << false;
    }
    void validity() {
        QFETCH(QString, name);
        QTEST(PackageName::parse(name).has_value(), "valid");
    }

    void tapsSearchesAndVersions() {
        QVERIFY(TapName::parse("acme/homebrew-tools") && TapName::parse("a1/b_c.d"));
        for (const char *name : {"", "acme", "acme/tools/x", "--force", "acme/--force", "../tools", "a b/c",
                                 "a/..", "https://example.com/x", "a/b\n"})
            QVERIFY2(!TapName::parse(name), name);
        QVERIFY(SearchText::parse(" two words ")->text() == "two words");
        QVERIFY(!SearchText::parse("--eval-all") && !SearchText::parse("  "));
        QVERIFY(isPlainVersion("1.2,3_1+a b") && isPlainVersion("latest"));
        for (const char *version : {"", ".", "..", ".hidden", "a/b", "a\nb", "\x01"})
            QVERIFY2(!isPlainVersion(version), version);
    }
};

QTEST_GUILESS_MAIN(PackageNameTest)
#include "PackageName_test.moc"
