#include "ui/settings/SettingsDialog.h"

#include "core/settings/Preferences.h"
#include "ui/authorization/TouchIDSetting.h"
#include "ui/settings/KegSettings.h"
#include "ui/widgets/HelpLabel.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace larkspur::ui {

namespace {

/// Widgets one below the other.
QWidget *column(const QList<QWidget *> &widgets) {
    auto *whole = new QWidget;
    auto *layout = new QVBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(18);
    for (QWidget *widget : widgets)
        layout->addWidget(widget);
    return whole;
}

QWidget *page(const QList<QWidget *> &widgets) {
    QWidget *whole = column(widgets);
    auto *layout = static_cast<QVBoxLayout *>(whole->layout());
    layout->setContentsMargins(10, 16, 10, 10);
    layout->addStretch(1);
    return whole;
}

} // namespace

SettingsDialog::SettingsDialog(Services services, QWidget *parent)
    : QDialog(parent)
    , m_preferences(services.preferences) {
    setWindowTitle(tr("Settings"));
    setMinimumWidth(580);
    auto *pages = new QTabWidget;
    pages->setDocumentMode(true);
    pages->addTab(page({generalSettings()}), tr("General"));
    pages->addTab(page({upgradeSettings(), new TouchIDSetting(services.storedPassword, services.tasks)}),
                  tr("Upgrades"));
    pages->addTab(page({new KegSettings({services.preferences, services.kegs, services.tasks})}),
                  tr("Time Machine"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 14);
    layout->addWidget(pages, 1);
    layout->addWidget(buttons);
    int height = 0;
    for (int i = 0; i < pages->count(); ++i)
        height = std::max(height, pages->widget(i)->heightForWidth(minimumWidth() - 24));
    pages->setMinimumHeight(height + pages->tabBar()->sizeHint().height());
}

QWidget *SettingsDialog::generalSettings() {
    return column(
        {textSetting(
             keys::brewPathOverride, tr("Custom Brew Path"),
             tr("Override the brew executable Larkspur uses. Leave blank to auto-detect standard Homebrew "
                "(/opt/homebrew, /usr/local) and Workbrew (/opt/workbrew/bin/brew). Set this if brew lives "
                "somewhere else."),
             false),
         textSetting(keys::customCaskAppdir, tr("Application Folder for Casks"),
                     tr("Where casks put their applications. Leave blank for Homebrew's own choice."), true),
         switchSetting(keys::includeAutoUpdateCasks, tr("Include applications that update themselves"),
                       tr("Lists an update for every cask whose recorded version is older, even if the "
                          "application keeps itself up to date.")),
         switchSetting(keys::refreshOnActivate, tr("Refresh when Larkspur becomes active"),
                       tr("Reads the lists again each time you come back to the window."))});
}

QWidget *SettingsDialog::upgradeSettings() {
    return column(
        {switchSetting(keys::showOperationPlan, tr("Show what will happen before upgrades and removals"),
                       tr("Lists the packages, versions and dependents that Homebrew is going to touch, and "
                          "lets you think again."),
                       true),
         switchSetting(
             keys::useReinstallForCasks, tr("Use reinstall for cask upgrades"),
             tr("Enable \"Use reinstall for cask upgrades\" if you experience \"listxattr for destination "
                "failed\" errors when upgrading casks. This temporarily disables Homebrew's copy-xattrs step "
                "that fails on systems running OpenCore Legacy Patcher (OCLP)."))});
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

QWidget *SettingsDialog::switchSetting(const QString &key, const QString &name, const QString &help,
                                       bool fallback) {
    auto *group = new QWidget;
    auto *box = new QCheckBox(name);
    box->setChecked(m_preferences.boolean(key, fallback));
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) { m_preferences.set(key, on); });
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(3);
    layout->addWidget(box);
    layout->addWidget(helpLabel(help));
    return group;
}

} // namespace larkspur::ui
