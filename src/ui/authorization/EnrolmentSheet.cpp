#include "ui/authorization/EnrolmentSheet.h"

#include "core/async/TaskScope.h"
#include "ui/authorization/PasswordField.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

Task<> enrol(StoredPassword *stored, Password typed, QPointer<QObject> sheet,
             std::function<void(StoredPassword::Enrolment)> done) {
    const auto enrolment = co_await stored->enrol(std::move(typed));
    if (sheet)
        done(enrolment);
}

} // namespace

EnrolmentSheet::EnrolmentSheet(StoredPassword &stored, TaskScope &tasks, QWidget *parent)
    : QDialog(parent)
    , m_stored(stored)
    , m_tasks(tasks)
    , m_password(new PasswordField)
    , m_error(new QLabel) {
    setWindowTitle(tr("Touch ID Authorization"));
    setMinimumWidth(420);
    auto *text = new QLabel(tr(
        "Enter your administrator password once. Larkspur keeps it in the macOS Keychain, protected by Touch "
        "ID, so future administrator actions need only your fingerprint."));
    text->setWordWrap(true);
    m_error->hide();
    auto *form = new QFormLayout;
    form->addRow(tr("Password"), m_password);
    auto *buttons = new QDialogButtonBox;
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    m_enable = buttons->addButton(tr("Enable"), QDialogButtonBox::AcceptRole);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(22, 20, 22, 16);
    layout->setSpacing(12);
    layout->addWidget(text);
    layout->addLayout(form);
    layout->addWidget(m_error);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &EnrolmentSheet::enable);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void EnrolmentSheet::enable() {
    if (m_password->isEmpty())
        return;
    m_enable->setEnabled(false);
    m_tasks.spawn(QStringLiteral("The enrolment of a password"),
                  enrol(&m_stored, m_password->take(), this,
                        [this](StoredPassword::Enrolment enrolment) { onEnrolled(enrolment); }));
}

void EnrolmentSheet::onEnrolled(StoredPassword::Enrolment enrolment) {
    m_enable->setEnabled(true);
    if (enrolment == StoredPassword::Enrolment::Saved) {
        accept();
        return;
    }
    m_error->setText(enrolment == StoredPassword::Enrolment::WrongPassword
                         ? tr("That doesn't match your macOS account password.")
                         : tr("The password couldn't be saved to the Keychain."));
    m_error->show();
    m_password->setFocus();
}

} // namespace larkspur::ui
