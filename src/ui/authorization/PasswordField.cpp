#include "ui/authorization/PasswordField.h"

#include <QSignalBlocker>

namespace larkspur::ui {

PasswordField::PasswordField(QWidget *parent)
    : QLineEdit(parent) {
    setEchoMode(EchoMode::Password);
    setAccessibleName(tr("Password"));
    forgetSteps();
}

larkspur::Password PasswordField::take() {
    QString shared = text();
    QString taken(shared.constData(), shared.size());
    wipe(shared); // the field's own characters
    const QSignalBlocker quiet(this);
    forgetSteps();
    return larkspur::Password(std::move(taken));
}

/// The field keeps a list of what was typed and deleted, one character each, and the list keeps its memory.
/// It is begun anew, overwritten, and begun anew; from the start it has room for more than anybody types, so
/// that it never leaves an old place behind.
void PasswordField::forgetSteps() {
    constexpr qsizetype moreThanAnybodyTypes = 1024;
    setText({});
    insert(QString(moreThanAnybodyTypes, QLatin1Char('x')));
    setText({});
}

} // namespace larkspur::ui
