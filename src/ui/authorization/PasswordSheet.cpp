#include "ui/authorization/PasswordSheet.h"

#include "core/authorization/SudoAuth.h"
#include "ui/authorization/PasswordField.h"
#include "ui/theme/Colours.h"
#include "ui/widgets/ElidedLabel.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

PasswordSheet::PasswordSheet(SudoAuth &auth, QWidget *parent)
    : QDialog(parent)
    , m_auth(auth)
    , m_reason(new QLabel)
    , m_rows(new QFormLayout)
    , m_package(new ElidedLabel)
    , m_command(new ElidedLabel)
    , m_output(new ElidedLabel)
    , m_warning(new QLabel)
    , m_password(new PasswordField)
    , m_error(new QLabel)
    , m_note(new QLabel) {
    setWindowTitle(tr("Administrator Password Required"));
    setMinimumWidth(440);
    auto *title = new QLabel(tr("Administrator Password Required"));
    QFont bold = title->font();
    bold.setWeight(QFont::DemiBold);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    for (QLabel *label : {m_reason, m_warning, m_error, m_note}) {
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);
    }
    m_note->setForegroundRole(QPalette::PlaceholderText);
    m_warning->setMargin(8);
    m_warning->setAutoFillBackground(true);
    m_rows->addRow(tr("Package"), m_package);
    m_rows->addRow(tr("Command"), m_command);
    m_rows->addRow(tr("Output"), m_output);
    m_rows->addRow(m_warning);
    m_rows->addRow(tr("Password"), m_password);
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
    layout->addLayout(m_rows);
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
        m_password->take();
        hide();
        return;
    }
    showRequest();
    m_note->setText(m_auth.note());
    m_error->setText(m_auth.isVerifying() ? tr("Checking…") : m_auth.error());
    m_error->setVisible(!m_error->text().isEmpty());
    m_continue->setEnabled(!m_auth.isVerifying() && !m_password->isEmpty());
    m_password->setReadOnly(m_auth.isVerifying());
    if (!m_auth.isVerifying())
        m_password->setFocus();
    if (!isVisible())
        open();
}

void PasswordSheet::showRequest() {
    const PasswordRequest request = m_auth.request();
    const auto show = [this](QLabel *label, const QString &text) {
        label->setText(text);
        m_rows->setRowVisible(label, !text.isEmpty());
    };
    m_reason->setText(request.reason);
    show(m_package, request.package);
    show(m_command, request.command);
    show(m_output, request.trigger);
    show(m_warning, warningOf(request));
    QPalette ground = palette();
    ground.setColor(QPalette::Window, toneGround(Tone::Attention, ground));
    m_warning->setPalette(ground);
}

void PasswordSheet::proceed() {
    if (!m_password->isEmpty())
        m_auth.proceed(m_password->take());
}

void PasswordSheet::reject() {
    m_auth.cancel(); // which closes the sheet
}

} // namespace larkspur::ui
