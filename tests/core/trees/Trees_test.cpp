#include "core/trees/TreeChanges.h"
#include "core/trees/TreeScan.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QTest>

#include <unistd.h>

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
        QVERIFY(removeTree(fixture.folder.path(), root)); // read-only folder and all
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

    void aFileThatCannotBeReadIsNoCopy() {
        if (::geteuid() == 0)
            QSKIP("root may read everything");
        Fixture fixture;
        QDir().mkpath(fixture.path("keg"));
        Fixture::write(fixture.path("keg/secret"), "x");
        QFile::setPermissions(fixture.path("keg/secret"), {});
        const auto scan = TreeScan::of(fixture.path("keg"), TreeScan::Depth::Contents);
        QVERIFY(!scan && scan.error().contains("secret"));
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
        const QString around = fixture.folder.path();
        const auto linked = linkTree(around, root, fixture.path("aside/keg"));
        QVERIFY2(linked, qPrintable(linked ? QString() : linked.error()));
        QVERIFY(scan(root).matches(scan(fixture.path("aside/keg"))));
        const TreeScan before = scan(root);
        QVERIFY(removeTree(around, root)); // does not touch the other
        QVERIFY(moveTree(around, fixture.path("aside/keg"), root));
        QVERIFY(before.matches(scan(root)));
        QVERIFY(removeTree(around, root) && removeTree(around, fixture.path("never there")));
        QVERIFY(!linkTree(around, fixture.path("none"), fixture.path("to")));
    }

    void whatALinkLeadsToIsNotTouched() {
        Fixture fixture;
        const QString documents = fixture.path("Documents");
        QVERIFY(QDir().mkpath(documents + "/x/letters") && QDir().mkpath(fixture.path("prefix/own/x")));
        Fixture::write(documents + "/x/letters/file", "mine");
        QFile::setPermissions(documents, QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
        const TreeScan before = scan(documents);
        // The root may be reached through a link; what lies below it may not.
        QVERIFY(QFile::link(fixture.path("prefix"), fixture.path("root")));
        const QString root = fixture.path("root");
        QVERIFY(QFile::link(documents, root + "/link"));
        for (const QString &path : {root + "/link", root + "/link/x", root + "/link/x/letters", documents,
                                    root + "/../Documents/x", root + "/link/../own", root}) {
            QVERIFY2(!removeTree(root, path), qPrintable(path));
            QVERIFY2(!moveTree(root, path, root + "/moved"), qPrintable(path));
            QVERIFY2(path == root || !moveTree(root, root + "/own/x", path + "/new"), qPrintable(path));
            QVERIFY2(!linkTree(root, path, root + "/linked"), qPrintable(path));
        }
        QVERIFY(removeTree(root, root + "/link").error().contains("/link is a link"));
        QVERIFY(before.matches(scan(documents)) && QFileInfo(root + "/link").isSymLink());
        QVERIFY(QFile::link(documents, root + "/own/x/inside")); // goes, and what it leads to stays
        QFile::setPermissions(documents + "/x", QFile::ReadOwner | QFile::ExeOwner);
        const TreeScan closed = scan(documents);
        QFile::setPermissions(root + "/own/x", QFile::ReadOwner | QFile::ExeOwner); // is opened for that
        QVERIFY(removeTree(root, root + "/own"));
        QVERIFY(closed.matches(scan(documents)) && !QFile::exists(root + "/own"));
        QFile::setPermissions(documents + "/x", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};

QTEST_GUILESS_MAIN(TreesTest)
#include "Trees_test.moc"
