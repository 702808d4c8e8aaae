#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace larkspur {
class SudoAuth;
}

namespace larkspur::ui {

/// "Administrator Password Required": opens by itself when an operation asks for the password, and closes
/// when it has its answer.
class PasswordSheet : public QDialog {
    Q_OBJECT
  public:
    explicit PasswordSheet(SudoAuth &auth, QWidget *parent = nullptr);

    void reject() override;

  private:
    void update();
    void proceed();

    SudoAuth &m_auth;
    QLabel *m_reason;
    QLineEdit *m_password;
    QLabel *m_error;
    QLabel *m_note;
    QPushButton *m_continue;
};

/// What was typed, taken out of the field; nothing of it stays there.
QString takeText(QLineEdit *field);

} // namespace larkspur::ui
