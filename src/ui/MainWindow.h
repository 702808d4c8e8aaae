#pragma once

#include "inventory/records/Package.h"
#include "inventory/refresh/StartupCheck.h"

#include <QHash>
#include <QMainWindow>
#include <QTimer>

class QLabel;
class QSplitter;
class QStackedWidget;

namespace larkspur {
class Larkspur;
}

namespace larkspur::ui {

class OperationPanel;
class Screen;
class Sidebar;
class StartupScreen;

/// Sidebar, the screen that it chooses, and the operation panel below; before that the start-up check.
class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    explicit MainWindow(Larkspur &larkspur);
    ~MainWindow() override;

    /// Shows the cached lists and begins the check of Homebrew.
    void start();
    void showScreen(const QString &id);
    QString currentScreen() const { return m_currentScreen; }

  Q_SIGNALS:
    /// The person has closed the window for good; nothing runs that must be waited for.
    void closed();

  protected:
    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void makeMenus();
    void checkHomebrew();
    void onChecked(StartupOutcome outcome);
    void onInventoryChanged();
    QWidget *makeSidebarColumn();
    void showPackage(const PackageId &id);
    void showSettings();
    void refresh();
    void askBeforeClosing();
    void restoreLayout();
    void saveLayout();

    Larkspur &m_larkspur;
    QStackedWidget *m_pages;
    StartupScreen *m_startup;
    QSplitter *m_splitter;
    Sidebar *m_sidebar;
    QLabel *m_brewVersion;
    QStackedWidget *m_screenStack;
    OperationPanel *m_operationPanel;
    QHash<QString, Screen *> m_screens;
    QString m_currentScreen;
    QTimer m_firstCheck;    ///< runs from the start until the first check begins
    bool m_isReady = false; ///< the check of Homebrew has passed
    bool m_isChecking = false;
    bool m_closesWhenIdle = false;
};

} // namespace larkspur::ui
