#pragma once

#include "core/authorization/StoredPassword.h"

#include <QDialog>

class QLabel;
class QPushButton;

namespace larkspur {
class TaskScope;
}

namespace larkspur::ui {

class PasswordField;

/// "Touch ID Authorization": takes the password once and has it kept.
class EnrolmentSheet : public QDialog {
    Q_OBJECT
  public:
    EnrolmentSheet(StoredPassword &stored, TaskScope &tasks, QWidget *parent = nullptr);

  private:
    void enable();
    void onEnrolled(StoredPassword::Enrolment enrolment);

    StoredPassword &m_stored;
    TaskScope &m_tasks;
    PasswordField *m_password;
    QLabel *m_error;
    QPushButton *m_enable;
};

} // namespace larkspur::ui
