#pragma once

#include "core/authorization/Password.h"

#include <QLineEdit>

namespace larkspur::ui {

/// A field for a password, of which nothing stays in memory once it was taken.
class PasswordField : public QLineEdit {
    Q_OBJECT
  public:
    explicit PasswordField(QWidget *parent = nullptr);

    bool isEmpty() const { return text().isEmpty(); }
    /// What was typed; the field is empty afterwards. Not announced as a change.
    larkspur::Password take();

  private:
    void forgetSteps();
};

} // namespace larkspur::ui
