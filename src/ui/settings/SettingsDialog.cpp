#include "ui/settings/SettingsDialog.h"

#include "core/settings/Preferences.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

QLabel *helpLabel(const QString &text) {
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.92);
    label->setFont(font);
    return label;
}

} // namespace

SettingsDialog::SettingsDialog(Preferences &preferences, QWidget *parent)
    : QDialog(parent)
    , m_preferences(preferences) {
    setWindowTitle(tr("Settings"));
    setMinimumWidth(540);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 14);
    layout->setSpacing(16);
    layout->addWidget(textSetting(
        keys::brewPathOverride, tr("Custom Brew Path"),
        tr("Override the brew executable Larkspur uses. Leave blank to auto-detect standard Homebrew "
           "(/opt/homebrew, /usr/local) and Workbrew (/opt/workbrew/bin/brew). Set this if brew lives "
           "somewhere else."),
        false));
    layout->addWidget(
        textSetting(keys::customCaskAppdir, tr("Application Folder for Casks"),
                    tr("Where casks put their applications. Leave blank for Homebrew's own choice."), true));
    layout->addWidget(switchSetting(keys::includeAutoUpdateCasks,
                                    tr("Include applications that update themselves"),
                                    tr("Lists an update for every cask whose recorded version is older, even "
                                       "if the application keeps itself "
                                       "up to date.")));
    layout->addWidget(switchSetting(keys::refreshOnActivate, tr("Refresh when Larkspur becomes active"),
                                    tr("Reads the lists again each time you come back to the window.")));
    layout->addStretch(1);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
}

QWidget *SettingsDialog::textSetting(const QString &key, const QString &name, const QString &help,
                                     bool choosesFolder) {
    auto *group = new QWidget;
    auto *title = new QLabel(name);
    auto *field = new QLineEdit(m_preferences.string(key));
    field->setAccessibleName(name);
    field->setClearButtonEnabled(true);
    title->setBuddy(field);
    auto *choose = new QPushButton(tr("Choose…"));
    choose->setAccessibleName(tr("Choose %1").arg(name));
    auto *row = new QHBoxLayout;
    row->addWidget(field, 1);
    row->addWidget(choose);
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(5);
    layout->addWidget(title);
    layout->addLayout(row);
    layout->addWidget(helpLabel(help));
    const auto store = [this, key, field] { m_preferences.set(key, field->text().trimmed()); };
    connect(field, &QLineEdit::editingFinished, this, store);
    connect(choose, &QPushButton::clicked, this, [this, field, store, choosesFolder] {
        auto *dialog = new QFileDialog(this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setFileMode(choosesFolder ? QFileDialog::Directory : QFileDialog::ExistingFile);
        connect(dialog, &QFileDialog::fileSelected, field, [field, store](const QString &path) {
            field->setText(path);
            store();
        });
        dialog->open();
    });
    return group;
}

QWidget *SettingsDialog::switchSetting(const QString &key, const QString &name, const QString &help) {
    auto *group = new QWidget;
    auto *box = new QCheckBox(name);
    box->setChecked(m_preferences.boolean(key));
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) { m_preferences.set(key, on); });
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(3);
    layout->addWidget(box);
    layout->addWidget(helpLabel(help));
    return group;
}

} // namespace larkspur::ui
