#pragma once

#include <QDialog>

class QFormLayout;
class QLabel;
class QPushButton;

namespace larkspur {
class SudoAuth;
}

namespace larkspur::ui {

class PasswordField;

/// "Administrator Password Required": opens by itself when an operation asks for the password, and closes
/// when it has its answer.
class PasswordSheet : public QDialog {
    Q_OBJECT
  public:
    explicit PasswordSheet(SudoAuth &auth, QWidget *parent = nullptr);

    void reject() override;

  private:
    void update();
    void showRequest();
    void proceed();

    SudoAuth &m_auth;
    QLabel *m_reason;
    QFormLayout *m_rows; ///< who asks, the warning, and the field
    QLabel *m_package;
    QLabel *m_command;
    QLabel *m_output;
    QLabel *m_warning;
    PasswordField *m_password;
    QLabel *m_error;
    QLabel *m_note;
    QPushButton *m_continue;
};

} // namespace larkspur::ui
