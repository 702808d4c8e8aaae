#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace larkspur::ui {

/// What the window shows before Homebrew is known to work: the check, and what to do when it fails.
class StartupScreen : public QWidget {
    Q_OBJECT
  public:
    explicit StartupScreen(QWidget *parent = nullptr);

    void showChecking();
    void showBrewNotInstalled();
    void showXcodeSetup();

  Q_SIGNALS:
    void retryRequested();
    void settingsRequested();

  private:
    void show(const QString &title, const QString &text, const QStringList &commands);

    QLabel *m_title;
    QLabel *m_text;
    QProgressBar *m_busy;
    QVBoxLayout *m_commands;
    QPushButton *m_retry;
    QPushButton *m_settings;
};

} // namespace larkspur::ui
