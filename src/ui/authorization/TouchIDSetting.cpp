#include "ui/authorization/TouchIDSetting.h"

#include "core/authorization/StoredPassword.h"
#include "ui/authorization/EnrolmentSheet.h"
#include "ui/widgets/HelpLabel.h"

#include <QCheckBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

TouchIDSetting::TouchIDSetting(StoredPassword &stored, TaskScope &tasks, QWidget *parent)
    : QWidget(parent)
    , m_stored(stored)
    , m_tasks(tasks)
    , m_switch(new QCheckBox(tr("Authorize with Touch ID")))
    , m_change(new QPushButton(tr("Update Stored Password…"))) {
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(3);
    layout->addWidget(m_switch);
    layout->addWidget(helpLabel(
        stored.isAvailable() ? tr("When Homebrew needs administrator privileges — updating apps that install "
                                  "system components, "
                                  "for example — authorize with your fingerprint instead of typing your "
                                  "password. Your password "
                                  "is kept in the macOS Keychain, protected by Touch ID, and is removed when "
                                  "you turn this off.")
                             : tr("Touch ID isn't available on this Mac, or no fingerprints are enrolled.")));
    layout->addWidget(m_change, 0, Qt::AlignLeft);
    connect(m_switch, &QCheckBox::clicked, this, [this](bool on) {
        if (on)
            askForPassword();
        else
            m_stored.forget();
        update();
    });
    connect(m_change, &QPushButton::clicked, this, &TouchIDSetting::askForPassword);
    update();
}

void TouchIDSetting::update() {
    m_switch->setEnabled(m_stored.isAvailable() || m_stored.isEnabled());
    m_switch->setChecked(m_stored.isEnabled());
    m_change->setVisible(m_stored.isEnabled() && m_stored.hasCopy());
}

void TouchIDSetting::askForPassword() {
    auto *sheet = new EnrolmentSheet(m_stored, m_tasks, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::finished, this, &TouchIDSetting::update);
    sheet->open();
}

} // namespace larkspur::ui
