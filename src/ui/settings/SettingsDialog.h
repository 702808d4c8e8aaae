#pragma once

#include <QDialog>

class QFormLayout;

namespace larkspur {
class KegPreservationManager;
class Preferences;
class StoredPassword;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

/// The person's preferences. A change counts at once; there is nothing to confirm.
class SettingsDialog : public QDialog {
    Q_OBJECT
  public:
    struct Services {
        Preferences &preferences;
        StoredPassword &storedPassword;
        KegPreservationManager &kegs;
        TaskScope &tasks;
    };

    explicit SettingsDialog(Services services, QWidget *parent = nullptr);

  private:
    QWidget *generalSettings();
    QWidget *upgradeSettings();
    QWidget *textSetting(const QString &key, const QString &name, const QString &help, bool choosesFolder);
    QWidget *switchSetting(const QString &key, const QString &name, const QString &help,
                           bool fallback = false);

    Preferences &m_preferences;
};

} // namespace larkspur::ui
