#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

/// Each folder under src/ sees only what its row names; system differences stand only in platform/.
class IncludeDirectionsTest : public QObject {
    Q_OBJECT

    static const QHash<QString, QSet<QString>> &rows() {
        static const QHash<QString, QSet<QString>> table{
            {"core", {}},
            {"platform", {"core"}},
            {"inventory", {"core"}},
            {"userdata", {"core", "inventory"}},
            {"operations", {"core", "inventory"}},
            {"app", {"core", "inventory", "operations", "platform", "userdata"}},
            {"cli", {"app", "core", "inventory", "operations", "userdata"}},
            {"ui", {"app", "core", "inventory", "operations", "userdata"}},
        };
        return table;
    }

    template <typename Check>
    static void forEachFile(Check check) {
        QDirIterator files(LARKSPUR_SOURCES, {"*.h", "*.cpp", "*.mm"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            check(path.mid(QString(LARKSPUR_SOURCES).size() + 1), QString::fromUtf8(file.readAll()));
        }
    }

  private Q_SLOTS:
    void includesPointDownwards() {
        const QRegularExpression include("^#include \"([a-z]+)/", QRegularExpression::MultilineOption);
        int seen = 0;
        forEachFile([&](const QString &path, const QString &text) {
            const QString folder = path.section('/', 0, 0);
            if (!path.contains('/'))
                return; // main.cpp joins everything
            QVERIFY2(rows().contains(folder), qPrintable("no row for the folder of " + path));
            for (auto matches = include.globalMatch(text); matches.hasNext();) {
                const QString target = matches.next().captured(1);
                ++seen;
                QVERIFY2(target == folder || rows()[folder].contains(target),
                         qPrintable(path + " includes " + target));
            }
        });
        QVERIFY(seen > 100); // the pattern still finds include lines
    }

    void systemsAreToldApartOnlyInPlatform() {
        const QRegularExpression condition("#\\s*if.*(__APPLE__|__linux__|Q_OS_|_WIN32)");
        forEachFile([&](const QString &path, const QString &text) {
            QVERIFY2(path.startsWith("platform/") || !condition.match(text).hasMatch(), qPrintable(path));
        });
    }
};

QTEST_GUILESS_MAIN(IncludeDirectionsTest)
#include "IncludeDirections_test.moc"
