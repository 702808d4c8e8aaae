#pragma once

#include <QDialog>

class QFormLayout;

namespace larkspur {
class Preferences;
}

namespace larkspur::ui {

/// The person's preferences. A change counts at once; there is nothing to confirm.
class SettingsDialog : public QDialog {
    Q_OBJECT
  public:
    explicit SettingsDialog(Preferences &preferences, QWidget *parent = nullptr);

  private:
    QWidget *textSetting(const QString &key, const QString &name, const QString &help, bool choosesFolder);
    QWidget *switchSetting(const QString &key, const QString &name, const QString &help);

    Preferences &m_preferences;
};

} // namespace larkspur::ui
