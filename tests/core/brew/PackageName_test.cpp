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
        for (const char *name : {"", "-x", "--force", "a b", "a;rm", "a\nb", "../x", "a/b", "a/b/c/d",
                                 "/bin/sh", "$HOME", "a'b", "`x`", "./x.rb", "a/-b/c", "-a/b/c", "wget\n"})
            QTest::newRow(qPrintable(QString("bad <%1>").arg(name))) << name << false;
    }
    void validity() {
        QFETCH(QString, name);
        QTEST(isValidPackageName(name), "valid");
    }
};

QTEST_GUILESS_MAIN(PackageNameTest)
#include "PackageName_test.moc"
