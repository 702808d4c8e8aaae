#include "core/errors/AppError.h"

#include <QTest>

using namespace larkspur;

class AppErrorTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void classification_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("suggestion"); // its beginning
        const QString xcode = "Xcode License Agreement Required";
        const QString index = "Unable to load Homebrew package index";
        const QString other = "Another Homebrew operation is in progress";
        const QString api = "Cannot download https://formulae.brew.sh/api/x";
        QTest::newRow("licence in capitals")
            << "YOU HAVE NOT AGREED TO THE XCODE LICENSE" << xcode << "You need to accept";
        QTest::newRow("xcodebuild") << "run xcodebuild first" << xcode << "You need to accept";
        QTest::newRow("licence alone") << "bad license" << "bad license" << "Try running 'brew doctor'";
        QTest::newRow("index") << api << index << "Homebrew's package index";
        QTest::newRow("index before lock")
            << api + " Another active Homebrew" << index << "Homebrew's package index";
        QTest::newRow("download of something else")
            << "Cannot download http://x" << "Cannot download http://x" << "Try running";
        QTest::newRow("index in lower case") << api.toLower() << api.toLower() << "Try running";
        QTest::newRow("lock") << "Please wait for it" << other << "Another Homebrew process";
        QTest::newRow("lock in lower case") << "please wait" << "please wait" << "Try running";
        QTest::newRow("installed") << "x is already installed" << "x is already installed"
                                   << "This app is already installed.";
    }
    void classification() {
        QFETCH(QString, text);
        QFETCH(QString, message);
        QFETCH(QString, suggestion);
        const AppError error = AppError::from(BrewError::commandFailed(text));
        QCOMPARE(error.message(), message);
        QVERIFY2(error.recoverySuggestion().startsWith(suggestion), qPrintable(error.recoverySuggestion()));
    }

    void otherKinds() {
        QCOMPARE(AppError::from(BrewError::packageNotFound("wgt")).message(), "Package 'wgt' not found");
        QCOMPARE(AppError::from(BrewError::packageNotFound("wgt")).stableIdentifier(),
                 "package_not_found_wgt");
        QCOMPARE(AppError::from(BrewError::timeout("brew info")).message(), "Command timed out: brew info");
        QCOMPARE(AppError::from(BrewError::brewNotInstalled()).message(), "Homebrew is not installed");
        QCOMPARE(AppError::from(BrewError::brewNotInstalled()).stableIdentifier(), "brew_not_installed");
        // Kinds that the interface does not know keep their own text, classified like any other.
        QCOMPARE(AppError::from(BrewError::serviceControlFailed("Please wait")).message(),
                 "Another Homebrew operation is in progress");
        const AppError denied{AppError::Kind::PermissionDenied, "/x"};
        QCOMPARE(denied.message(), "Permission denied: /x");
        QCOMPARE(denied.stableIdentifier(), "permission_denied_/x");
    }
};

QTEST_GUILESS_MAIN(AppErrorTest)
#include "AppError_test.moc"
