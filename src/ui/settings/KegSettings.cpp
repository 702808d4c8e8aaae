#include "ui/settings/KegSettings.h"

#include "core/async/TaskScope.h"
#include "core/settings/Preferences.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/snapshots/SnapshotManager.h"
#include "ui/widgets/HelpLabel.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

constexpr qint64 mebibyte = 1024 * 1024;

/// What could not be removed is told by `problem`, in words.
Task<> removeAll(KegPreservationManager *kegs, QList<KegEntry> entries, QPointer<QLabel> problem) {
    QStringList reasons;
    for (const KegEntry &entry : entries)
        if (const auto removed = co_await kegs->remove(entry.formula, entry.version); !removed)
            reasons.append(removed.error());
    if (!problem)
        co_return;
    problem->setText(reasons.join(QLatin1Char('\n')));
    problem->setVisible(!reasons.isEmpty());
}

QHBoxLayout *row(const QString &name, QWidget *field) {
    auto *layout = new QHBoxLayout;
    auto *label = new QLabel(name);
    label->setBuddy(field);
    field->setAccessibleName(name);
    layout->addWidget(label);
    layout->addStretch(1);
    layout->addWidget(field);
    return layout;
}

} // namespace

KegSettings::KegSettings(Services services, QWidget *parent)
    : QWidget(parent)
    , m_services(services)
    , m_location(new QLineEdit)
    , m_away(new QLabel)
    , m_total(new QLabel)
    , m_problem(new QLabel)
    , m_copies(new QTreeWidget) {
    auto *retention = new QSpinBox;
    retention->setRange(0, 1000);
    retention->setKeyboardTracking(false);
    retention->setSpecialValueText(tr("Keep all snapshots"));
    retention->setValue(static_cast<int>(
        services.preferences.integer(keys::snapshotRetentionLimit, SnapshotManager::defaultRetention)));
    auto *enabled = new QCheckBox(tr("Keep the old version of a formula when it is upgraded"));
    enabled->setChecked(services.kegs.isEnabled());
    auto *cap = new QSpinBox;
    cap->setRange(64, 1024 * 1024);
    cap->setSingleStep(256);
    cap->setKeyboardTracking(false); // half a number is no limit: what is beyond it is removed
    cap->setSuffix(tr(" MiB"));
    cap->setValue(static_cast<int>(services.kegs.cap() / mebibyte));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addLayout(row(tr("Restore points to keep"), retention));
    layout->addWidget(enabled);
    layout->addWidget(
        helpLabel(tr("A rollback then puts the saved files back, with no rebuild and no download.")));
    layout->addLayout(row(tr("Space for saved versions"), cap));
    layout->addWidget(makeLocation());
    layout->addWidget(makeCopies(), 1);
    connect(retention, &QSpinBox::valueChanged, this,
            [this](int limit) { m_services.preferences.set(keys::snapshotRetentionLimit, limit); });
    connect(enabled, &QCheckBox::toggled, this,
            [this](bool on) { m_services.preferences.set(keys::kegPreservationEnabled, on); });
    connect(cap, &QSpinBox::valueChanged, this, [this](int amount) {
        m_services.preferences.set(keys::kegPreservationCapBytes, amount * mebibyte);
    });
    connect(&services.kegs, &KegPreservationManager::changed, this, &KegSettings::update);
    update();
}

QWidget *KegSettings::makeLocation() {
    auto *whole = new QWidget;
    auto *choose = new QPushButton(tr("Choose…"));
    auto *reset = new QPushButton(tr("Default"));
    choose->setAccessibleName(tr("Choose where saved versions are kept"));
    reset->setAccessibleName(tr("Keep saved versions in the default place"));
    m_location->setReadOnly(true);
    m_location->setAccessibleName(tr("Where saved versions are kept"));
    m_away->setWordWrap(true);
    auto *line = new QHBoxLayout;
    line->addWidget(m_location, 1);
    line->addWidget(choose);
    line->addWidget(reset);
    auto *layout = new QVBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(5);
    layout->addLayout(line);
    layout->addWidget(m_away);
    connect(choose, &QPushButton::clicked, this, &KegSettings::chooseLocation);
    connect(reset, &QPushButton::clicked, this,
            [this] { m_services.preferences.set(keys::kegPreservationLocation, QString()); });
    return whole;
}

QWidget *KegSettings::makeCopies() {
    auto *whole = new QWidget;
    m_copies->setHeaderLabels({tr("Saved version"), tr("Size"), tr("Saved")});
    m_copies->setRootIsDecorated(true);
    m_copies->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_copies->setAccessibleName(tr("Saved versions"));
    m_copies->setMinimumHeight(130);
    m_copies->header()->setStretchLastSection(false);
    m_copies->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_copies->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_copies->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    auto *remove = new QPushButton(tr("Remove"));
    remove->setAccessibleName(tr("Remove the selected saved versions"));
    m_total->setForegroundRole(QPalette::PlaceholderText);
    auto *line = new QHBoxLayout;
    line->addWidget(m_total, 1);
    line->addWidget(remove);
    auto *layout = new QVBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(m_copies, 1);
    layout->addLayout(line);
    m_problem->setWordWrap(true);
    m_problem->hide();
    layout->addWidget(m_problem);
    connect(remove, &QPushButton::clicked, this, &KegSettings::removeSelected);
    connect(m_copies, &QTreeWidget::itemSelectionChanged, this,
            [this, remove] { remove->setEnabled(!m_copies->selectedItems().isEmpty()); });
    remove->setEnabled(false);
    return whole;
}

void KegSettings::chooseLocation() {
    auto *dialog = new QFileDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { m_services.preferences.set(keys::kegPreservationLocation, path); });
    dialog->open();
}

void KegSettings::update() {
    const QString chosen = m_services.preferences.string(keys::kegPreservationLocation);
    m_location->setText(chosen.isEmpty() ? tr("Default (Application Support)") : m_services.kegs.folder());
    const bool isAway = !m_services.kegs.isLocationAvailable();
    m_away->setVisible(isAway || !m_services.kegs.failure().isEmpty());
    m_away->setText(!isAway ? m_services.kegs.failure()
                            : tr("This location isn't available right now (drive not mounted). Rollback for "
                                 "saved versions is "
                                 "paused until it's reconnected."));
    m_copies->clear();
    QHash<QString, QTreeWidgetItem *> formulae;
    QHash<QString, qint64> sizes;
    qint64 total = 0;
    for (const KegEntry &entry : m_services.kegs.entries()) {
        QTreeWidgetItem *&formula = formulae[entry.formula];
        if (!formula)
            formula = new QTreeWidgetItem(m_copies, {entry.formula});
        auto *item = new QTreeWidgetItem(
            formula, {entry.version, QLocale().formattedDataSize(entry.bytes),
                      QLocale().toString(entry.date.toLocalTime(), QLocale::ShortFormat)});
        item->setData(0, Qt::UserRole, entry.formula);
        total += entry.bytes;
        sizes[entry.formula] += entry.bytes;
        formula->setText(1, QLocale().formattedDataSize(sizes[entry.formula]));
        formula->setExpanded(true);
    }
    m_copies->sortItems(0, Qt::AscendingOrder);
    const auto count = m_services.kegs.entries().size();
    m_total->setText(
        (count == 1 ? tr("1 saved version takes %1") : tr("%1 saved versions take %2").arg(count))
            .arg(QLocale().formattedDataSize(total)));
}

void KegSettings::removeSelected() {
    QList<KegEntry> chosen;
    for (const QTreeWidgetItem *item : m_copies->selectedItems())
        for (const KegEntry &entry : m_services.kegs.entries()) {
            const bool isVersion = item->parent() &&
                                   item->data(0, Qt::UserRole).toString() == entry.formula &&
                                   item->text(0) == entry.version;
            const bool isFormula = !item->parent() && item->text(0) == entry.formula;
            if ((isVersion || isFormula) && !chosen.contains(entry))
                chosen.append(entry);
        }
    m_services.tasks.spawn(QStringLiteral("The removal of preserved kegs"),
                           removeAll(&m_services.kegs, chosen, m_problem));
}

} // namespace larkspur::ui
