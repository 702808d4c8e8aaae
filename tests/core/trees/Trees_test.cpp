#include "core/trees/TreeChanges.h"
#include "core/trees/TreeScan.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QTest>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

/// Trees with everything that a keg may hold.
class TreesTest : public QObject {
    Q_OBJECT

    static QByteArray bytes(const QString &path) { return QFile::encodeName(path); }

    static QString makeTree(const Fixture &fixture) {
        const QString root = fixture.path("keg");
        QDir().mkpath(root + "/bin");
        QDir().mkpath(root + QString::fromUtf8("/share/mit Leerzeichen/größe 🍺"));
        Fixture::write(root + "/bin/tool", "#!/bin/sh\n", true);
        Fixture::write(root + QString::fromUtf8("/share/mit Leerzeichen/größe 🍺/a\nb"), "odd");
        ::link(bytes(root + "/bin/tool").constData(), bytes(root + "/bin/same").constData());
        ::symlink("../bin/tool", bytes(root + "/share/link").constData());
        ::symlink("nowhere", bytes(root + "/share/dangling").constData());
        const int file = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, bytes(root + "/share/socket").constData(), sizeof address.sun_path);
        ::bind(file, reinterpret_cast<sockaddr *>(&address), sizeof address);
        ::close(file);
        ::chmod(bytes(root + "/bin").constData(), 0555);
        return root;
    }
    static TreeScan scan(const QString &path, TreeScan::Depth depth = TreeScan::Depth::Contents) {
        const auto found = TreeScan::of(path, depth);
        if (!found)
            qFatal("%s", qPrintable(found.error()));
        return *found;
    }

  private Q_SLOTS:
    void aScanSurvivesItsText() {
        Fixture fixture;
        const QString root = makeTree(fixture);
        const TreeScan before = scan(root);
        QCOMPARE(before.entries.size(), 9); // the socket is passed over
        const auto read = TreeScan::fromText(before.toText());
        QVERIFY(read && read->entries == before.entries && read->bytesOnDisk == before.bytesOnDisk);
        QVERIFY(!TreeScan::fromText(before.toText().chopped(9))); // cut
        QVERIFY(!TreeScan::fromText("f 644 x\nend 0\n"));
        QVERIFY(removeTree(root)); // read-only folder and all
        QVERIFY(!QFile::exists(root));
    }

    void everyDifferenceIsSeen_data() {
        QTest::addColumn<QString>("change");
        for (const char *change : {"byte", "size", "mode", "link", "missing", "more"})
            QTest::newRow(change) << change;
    }
    void everyDifferenceIsSeen() {
        QFETCH(QString, change);
        Fixture fixture;
        const QString root = fixture.path("keg");
        QDir().mkpath(root);
        Fixture::write(root + "/file", "12345");
        QVERIFY(QFile::link("file", root + "/link"));
        const TreeScan before = scan(root);
        QVERIFY(before.matches(scan(root)));
        if (change == "byte")
            Fixture::write(root + "/file", "12845");
        if (change == "size")
            Fixture::write(root + "/file", "1234");
        if (change == "mode")
            ::chmod(bytes(root + "/file").constData(), 0600);
        if (change == "link") {
            QFile::remove(root + "/link");
            ::symlink("other", bytes(root + "/link").constData());
        }
        if (change == "missing")
            QFile::remove(root + "/file");
        if (change == "more")
            Fixture::write(root + "/more", {});
        QVERIFY(!before.matches(scan(root)));
        // A scan that has read no contents knows all but the changed byte.
        QCOMPARE(before.matches(scan(root, TreeScan::Depth::Names)), change == "byte");
    }

    void whatCannotBeReadIsNamed() {
        Fixture fixture;
        const auto nothing = TreeScan::of(fixture.path("gone"), TreeScan::Depth::Names);
        QVERIFY(!nothing && nothing.error().startsWith(fixture.path("gone") + ": "));
        Fixture::write(fixture.path("file"), "x");
        QVERIFY(!TreeScan::of(fixture.path("file"), TreeScan::Depth::Contents));
    }

    void manyFoldersAreReadOnce() {
        Fixture fixture;
        const QString root = fixture.path("wide");
        for (int i = 0; i < 300; ++i) {
            const QString folder = root + QString("/%1/%2/%3").arg(i % 7).arg(i % 3).arg(i);
            QDir().mkpath(folder);
            Fixture::write(folder + "/file", QByteArray::number(i));
        }
        const TreeScan names = scan(root, TreeScan::Depth::Names); // by several threads
        QCOMPARE(names.entries.size(), 7 + 7 * 3 + 300 + 300);
        QVERIFY(names.matches(scan(root)));
        QVERIFY(std::ranges::is_sorted(names.entries, {}, &TreeEntry::path));
        for (int i = 0; i < 20; ++i)
            QVERIFY(names.matches(scan(root, TreeScan::Depth::Names)));
    }

    void hardLinksAreTheSameTreeAgain() {
        Fixture fixture;
        const QString root = makeTree(fixture);
        const auto linked = linkTree(root, fixture.path("aside/keg"));
        QVERIFY2(linked, qPrintable(linked ? QString() : linked.error()));
        QVERIFY(scan(root).matches(scan(fixture.path("aside/keg"))));
        const TreeScan before = scan(root);
        QVERIFY(removeTree(root)); // does not touch the other
        QVERIFY(moveTree(fixture.path("aside/keg"), root));
        QVERIFY(before.matches(scan(root)));
        QVERIFY(removeTree(root) && removeTree(fixture.path("never there")));
        QVERIFY(!linkTree(fixture.path("none"), fixture.path("to")));
    }
};

QTEST_GUILESS_MAIN(TreesTest)
#include "Trees_test.moc"
