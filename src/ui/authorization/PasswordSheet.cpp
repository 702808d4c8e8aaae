#include "ui/authorization/PasswordSheet.h"

#include "core/authorization/SudoAuth.h"
#include "ui/theme/Colours.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

PasswordSheet::PasswordSheet(SudoAuth &auth, QWidget *parent)
    : QDialog(parent)
    , m_auth(auth)
    , m_reason(new QLabel)
    , m_password(new QLineEdit)
    , m_error(new QLabel)
    , m_note(new QLabel) {
    setWindowTitle(tr("Administrator Password Required"));
    setMinimumWidth(440);
    auto *title = new QLabel(tr("Administrator Password Required"));
    QFont bold = title->font();
    bold.setWeight(QFont::DemiBold);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    for (QLabel *label : {m_reason, m_error, m_note}) {
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);
    }
    m_note->setForegroundRole(QPalette::PlaceholderText);
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setAccessibleName(tr("Password"));
    auto *form = new QFormLayout;
    form->addRow(tr("Password"), m_password);
    auto *buttons = new QDialogButtonBox;
    // Never the default, whatever has the focus: Return must not cancel.
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)->setAutoDefault(false);
    m_continue = buttons->addButton(tr("Continue"), QDialogButtonBox::AcceptRole);
    m_continue->setDefault(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(22, 20, 22, 16);
    layout->setSpacing(12);
    layout->addWidget(title);
    layout->addWidget(m_reason);
    layout->addLayout(form);
    layout->addWidget(m_error);
    layout->addWidget(m_note);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &PasswordSheet::proceed);
    connect(buttons, &QDialogButtonBox::rejected, this, &PasswordSheet::reject);
    connect(m_password, &QLineEdit::textChanged, this, &PasswordSheet::update);
    connect(&auth, &SudoAuth::changed, this, &PasswordSheet::update);
    update();
}

void PasswordSheet::update() {
    if (!m_auth.isPrompting()) {
        takeText(m_password);
        hide();
        return;
    }
    m_reason->setText(m_auth.reason());
    m_note->setText(m_auth.note());
    m_error->setText(m_auth.isVerifying() ? tr("Checking…") : m_auth.error());
    m_error->setVisible(!m_error->text().isEmpty());
    m_continue->setEnabled(!m_auth.isVerifying() && !m_password->text().isEmpty());
    m_password->setReadOnly(m_auth.isVerifying());
    if (!m_auth.isVerifying())
        m_password->setFocus();
    if (!isVisible())
        open();
}

void PasswordSheet::proceed() {
    if (!m_password->text().isEmpty())
        m_auth.proceed(Password(takeText(m_password)));
}

void PasswordSheet::reject() {
    m_auth.cancel(); // which closes the sheet
}

QString takeText(QLineEdit *field) {
    QString shared = field->text();
    QString taken(shared.constData(), shared.size());
    wipe(shared); // the field's own characters
    const QSignalBlocker quiet(field);
    field->clear();
    return taken;
}

} // namespace larkspur::ui
