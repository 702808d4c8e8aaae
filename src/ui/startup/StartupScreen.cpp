#include "ui/startup/StartupScreen.h"

#include "core/errors/AppError.h"
#include "ui/theme/Icons.h"

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace larkspur::ui {

namespace {

void clear(QLayout *layout) {
    while (QLayoutItem *item = layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

/// A command line to run in a terminal, with a button that copies it.
QWidget *commandRow(const QString &command) {
    auto *row = new QWidget;
    auto *field = new QLineEdit(command);
    field->setReadOnly(true);
    field->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    field->setMinimumWidth(360);
    field->setAccessibleName(QObject::tr("Command"));
    auto *copy = new QPushButton(QObject::tr("Copy"));
    copy->setAccessibleName(QObject::tr("Copy %1").arg(command));
    QObject::connect(copy, &QPushButton::clicked, row,
                     [command] { QApplication::clipboard()->setText(command); });
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field, 1);
    layout->addWidget(copy);
    return row;
}

} // namespace

StartupScreen::StartupScreen(QWidget *parent)
    : QWidget(parent)
    , m_title(new QLabel)
    , m_text(new QLabel)
    , m_busy(new QProgressBar)
    , m_commands(new QVBoxLayout)
    , m_retry(new QPushButton(tr("Retry")))
    , m_settings(new QPushButton(tr("Settings…"))) {
    auto *picture = new QLabel;
    picture->setPixmap(QIcon(QStringLiteral(":/larkspur.svg")).pixmap(QSize(96, 96)));
    QFont font = m_title->font();
    font.setPointSizeF(font.pointSizeF() * 1.5);
    font.setWeight(QFont::DemiBold);
    m_title->setFont(font);
    m_text->setWordWrap(true);
    m_text->setAlignment(Qt::AlignCenter);
    m_text->setFixedWidth(460);
    m_busy->setRange(0, 0);
    m_busy->setFixedWidth(240);
    m_busy->setTextVisible(false);
    m_busy->setAccessibleName(tr("Checking"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_settings);
    buttons->addWidget(m_retry);
    m_retry->setDefault(true);
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(14);
    layout->addStretch(2);
    layout->addWidget(picture, 0, Qt::AlignHCenter);
    layout->addWidget(m_title, 0, Qt::AlignHCenter);
    layout->addWidget(m_text, 0, Qt::AlignHCenter);
    layout->addWidget(m_busy, 0, Qt::AlignHCenter);
    auto *commands = new QWidget;
    commands->setLayout(m_commands);
    layout->addWidget(commands, 0, Qt::AlignHCenter);
    layout->addLayout(buttons);
    layout->setAlignment(buttons, Qt::AlignHCenter);
    layout->addStretch(3);
    connect(m_retry, &QPushButton::clicked, this, &StartupScreen::retryRequested);
    connect(m_settings, &QPushButton::clicked, this, &StartupScreen::settingsRequested);
    showChecking();
}

void StartupScreen::showChecking() {
    show(tr("Checking Homebrew installation..."), {}, {});
    m_busy->show();
    m_retry->hide();
    m_settings->hide();
}

void StartupScreen::showBrewNotInstalled() {
    const AppError error{AppError::Kind::BrewNotInstalled, {}};
    show(error.message(),
         error.recoverySuggestion() + tr("\n\nIf brew lives somewhere else, name its path in the settings."),
         {});
}

void StartupScreen::showXcodeSetup() {
    show(tr("Xcode Setup Required"),
         tr("Homebrew needs Xcode's build tools to run. After a macOS update, Xcode often has to finish "
            "setting up — "
            "and re-accept its license — before Larkspur can read your installed packages."),
         {QStringLiteral("sudo xcodebuild -runFirstLaunch"),
          QStringLiteral("sudo xcodebuild -license accept")});
}

void StartupScreen::show(const QString &title, const QString &text, const QStringList &commands) {
    m_title->setText(title);
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
    // A centred label is not asked for its height; an empty one has none.
    m_text->setFixedHeight(std::max(0, m_text->heightForWidth(m_text->width())));
    clear(m_commands);
    for (const QString &command : commands)
        m_commands->addWidget(commandRow(command));
    m_busy->hide();
    m_retry->show();
    m_settings->show();
}

} // namespace larkspur::ui
