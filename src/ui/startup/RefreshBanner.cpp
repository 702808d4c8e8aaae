#include "ui/startup/RefreshBanner.h"

#include "ui/theme/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace larkspur::ui {

RefreshBanner::RefreshBanner(const InventoryState &state, QWidget *parent)
    : QFrame(parent)
    , m_state(state)
    , m_picture(new QLabel)
    , m_text(new QLabel)
    , m_retry(new QPushButton(icon(QStringLiteral("refresh")), tr("Retry"))) {
    m_picture->setPixmap(icon(QStringLiteral("warning")).pixmap(QSize(18, 18)));
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_retry->setAccessibleName(tr("Read the packages again"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(14, 8, 12, 8);
    row->setSpacing(10);
    row->addWidget(m_picture, 0, Qt::AlignTop);
    row->addWidget(m_text, 1);
    row->addWidget(m_retry, 0, Qt::AlignTop);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    connect(&state, &InventoryState::changed, this, &RefreshBanner::update);
    connect(m_retry, &QPushButton::clicked, this, &RefreshBanner::retryRequested);
    update();
}

void RefreshBanner::update() {
    const Inventory &inventory = m_state.value();
    QStringList lines;
    for (const RepeatedError &repeated : inventory.refreshErrors) {
        QString line = repeated.error.message();
        if (repeated.count > 1)
            line += tr(" (%1 times)").arg(repeated.count);
        if (const QString suggestion = repeated.error.recoverySuggestion(); !suggestion.isEmpty())
            line += QLatin1Char('\n') + suggestion;
        lines.append(line);
    }
    if (!lines.isEmpty() && inventory.hasLoaded)
        lines.append(tr("The lists it concerns are from before."));
    if (inventory.unreadablePackages > 0)
        lines.append(inventory.unreadablePackages == 1
                         ? tr("1 package could not be read.")
                         : tr("%1 packages could not be read.").arg(inventory.unreadablePackages));
    m_text->setText(lines.join(QLatin1Char('\n')));
    m_retry->setEnabled(!inventory.isLoading && !inventory.isRefreshing);
    setVisible(!lines.isEmpty());
}

} // namespace larkspur::ui
