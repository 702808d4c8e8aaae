#include "ui/screens/TapsScreen.h"

#include "core/settings/Preferences.h"
#include "inventory/refresh/HiddenTaps.h"
#include "inventory/state/InventoryState.h"
#include "ui/theme/Colours.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/EmptyState.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

QString trustWord(const TapInfo &tap, const std::optional<QSet<QString>> &trusted) {
    if (tap.isOfficial)
        return QObject::tr("Official");
    if (!trusted)
        return QObject::tr("Unknown");
    return trusted->contains(tap.name) ? QObject::tr("Trusted") : QObject::tr("Not trusted");
}

QStandardItem *number(int value) {
    auto *item = new QStandardItem;
    item->setData(value, Qt::DisplayRole);
    item->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return item;
}

} // namespace

TapsScreen::TapsScreen(InventoryState &inventory, Preferences &preferences)
    : RecordTableScreen(tr("Taps"), tr("Filter taps"),
                        {tr("Name"), tr("Formulae"), tr("Casks"), tr("Trust"), tr("Remote")}, inventory)
    , m_preferences(preferences)
    , m_banner(new QFrame)
    , m_bannerText(new QLabel) {
    auto *dismissButton = new QPushButton(tr("Dismiss"));
    dismissButton->setAccessibleName(tr("Dismiss the notice of hidden packages"));
    auto *picture = new QLabel;
    picture->setPixmap(icon(QStringLiteral("warning")).pixmap(QSize(22, 22)));
    m_bannerText->setWordWrap(true);
    auto *bannerTitle = new QLabel(tr("Packages hidden by Homebrew"));
    QFont bold = bannerTitle->font();
    bold.setWeight(QFont::DemiBold);
    bannerTitle->setFont(bold);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(bannerTitle);
    texts->addWidget(m_bannerText);
    auto *row = new QHBoxLayout(m_banner);
    row->setContentsMargins(14, 8, 12, 8);
    row->addWidget(picture);
    row->addLayout(texts, 1);
    row->addWidget(dismissButton);
    m_banner->setAutoFillBackground(true);
    addBanner(m_banner);
    connect(dismissButton, &QPushButton::clicked, this, &TapsScreen::dismiss);
}

void TapsScreen::reload() {
    RecordTableScreen::reload();
    const auto hidden = tapsToReport(inventory().value().hiddenUntrustedTaps,
                                     m_preferences.strings(keys::dismissedUntrustedTaps));
    m_banner->setVisible(!hidden.isEmpty());
    QStringList lines;
    for (const HiddenTap &tap : hidden)
        lines.append(
            tap.packages.isEmpty()
                ? tr("%1 is not trusted.").arg(tap.name)
                : tr("%1 is not trusted: %2").arg(tap.name, tap.packages.join(QStringLiteral(", "))));
    m_bannerText->setText(lines.join(QLatin1Char('\n')));
    QPalette ground = palette();
    ground.setColor(QPalette::Window, toneGround(Tone::Attention, palette()));
    m_banner->setPalette(ground);
}

void TapsScreen::dismiss() {
    QStringList names;
    for (const HiddenTap &tap : inventory().value().hiddenUntrustedTaps)
        names.append(tap.name);
    m_preferences.set(keys::dismissedUntrustedTaps, names);
    m_banner->hide();
}

QList<QList<QStandardItem *>> TapsScreen::rows() const {
    QList<QList<QStandardItem *>> rows;
    const Inventory &value = inventory().value();
    for (const TapInfo &tap : value.taps)
        rows.append({new QStandardItem(tap.name), number(tap.formulaCount), number(tap.caskCount),
                     new QStandardItem(trustWord(tap, value.trustedTaps)),
                     new QStandardItem(tap.remote.value_or(QString()))});
    return rows;
}

QString TapsScreen::subtitle() const {
    return tr("%1 sources of packages").arg(inventory().value().taps.size());
}

void TapsScreen::showEmptyState(EmptyState *empty) const {
    empty->show(QStringLiteral("taps"), tr("No Taps"),
                tr("Homebrew reads its packages from its own catalogue; further sources appear here."));
}

} // namespace larkspur::ui
