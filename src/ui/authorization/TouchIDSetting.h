#pragma once

#include <QWidget>

class QCheckBox;
class QPushButton;

namespace larkspur {
class StoredPassword;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

/// The switch "Authorize with Touch ID" and what belongs to it.
class TouchIDSetting : public QWidget {
    Q_OBJECT
  public:
    TouchIDSetting(StoredPassword &stored, TaskScope &tasks, QWidget *parent = nullptr);

  private:
    void update();
    void askForPassword();

    StoredPassword &m_stored;
    TaskScope &m_tasks;
    QCheckBox *m_switch;
    QPushButton *m_change;
};

} // namespace larkspur::ui
