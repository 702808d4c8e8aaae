#include "ui/widgets/PackageActions.h"

#include "operations/OperationCenter.h"
#include "ui/theme/Icons.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace larkspur::ui {

namespace {

template <typename Fits>
QList<PackageRow> those(const QList<PackageRow> &rows, Fits fits) {
    QList<PackageRow> kept;
    std::ranges::copy_if(rows, std::back_inserter(kept), fits);
    return kept;
}

OperationRequest request(OperationKind kind, const QList<PackageRow> &rows) {
    OperationRequest request{.kind = kind};
    for (const PackageRow &row : rows)
        request.packages.append(row.target());
    return request;
}

QString counted(const QString &verb, const QList<PackageRow> &rows) {
    return rows.size() == 1 ? QStringLiteral("%1 %2").arg(verb, rows.first().title)
                            : QStringLiteral("%1 %2 Packages").arg(verb).arg(rows.size());
}

} // namespace

PackageActions::PackageActions(OperationCenter &operations, QObject *parent)
    : QObject(parent)
    , m_operations(operations) {}

void PackageActions::install(const QList<PackageRow> &rows) {
    if (!rows.isEmpty())
        m_operations.start(request(OperationKind::Install, rows));
}

void PackageActions::upgrade(const QList<PackageRow> &rows) {
    if (!rows.isEmpty())
        m_operations.start(request(OperationKind::Upgrade, rows));
}

void PackageActions::upgradeAll(int outdated) {
    m_operations.start({.kind = OperationKind::UpgradeAll, .expectedSteps = outdated});
}

void PackageActions::reinstall(const QList<PackageRow> &rows) {
    if (!rows.isEmpty())
        m_operations.start(request(OperationKind::Reinstall, rows));
}

void PackageActions::setPinned(const QList<PackageRow> &rows, bool pinned) {
    if (!rows.isEmpty())
        m_operations.start(request(pinned ? OperationKind::Pin : OperationKind::Unpin, rows));
}

void PackageActions::uninstall(const QList<PackageRow> &rows, QWidget *window) {
    if (rows.isEmpty())
        return;
    auto *question = new QMessageBox(QMessageBox::Warning, tr("Uninstall"),
                                     counted(tr("Uninstall"), rows) + u'?', QMessageBox::Cancel, window);
    question->setAttribute(Qt::WA_DeleteOnClose);
    QStringList names;
    for (const PackageRow &row : rows)
        names.append(row.title);
    constexpr qsizetype shownNames = 12;
    QString list = names.first(std::min(shownNames, names.size())).join(QStringLiteral(", "));
    if (names.size() > shownNames)
        list += tr(" and %1 more").arg(names.size() - shownNames);
    question->setInformativeText(tr("Homebrew will remove %1 from this machine.").arg(list));
    const QPushButton *confirm = question->addButton(tr("Uninstall"), QMessageBox::DestructiveRole);
    connect(question, &QMessageBox::buttonClicked, this,
            [this, question, confirm, rows](QAbstractButton *clicked) {
                if (clicked == confirm)
                    m_operations.start(request(OperationKind::Uninstall, rows));
                question->close();
            });
    question->open();
}

void PackageActions::fillMenu(QMenu *menu, const QList<PackageRow> &rows, QWidget *window) {
    const auto outdated = those(rows, [](const PackageRow &row) { return !row.newVersion.isEmpty(); });
    const auto available = those(rows, [](const PackageRow &row) { return !row.installed; });
    const auto installed = those(rows, [](const PackageRow &row) { return row.installed; });
    if (!outdated.isEmpty())
        menu->addAction(icon(QStringLiteral("upgrade")), counted(tr("Upgrade"), outdated), this,
                        [this, outdated] { upgrade(outdated); });
    if (!available.isEmpty())
        menu->addAction(icon(QStringLiteral("install")), counted(tr("Install"), available), this,
                        [this, available] { install(available); });
    if (!installed.isEmpty()) {
        const auto pinned = those(installed, [](const PackageRow &row) { return row.pinned; });
        const auto free = those(installed, [](const PackageRow &row) { return !row.pinned; });
        menu->addAction(icon(QStringLiteral("refresh")), counted(tr("Reinstall"), installed), this,
                        [this, installed] { reinstall(installed); });
        if (!free.isEmpty())
            menu->addAction(icon(QStringLiteral("pinned")), counted(tr("Pin"), free), this,
                            [this, free] { setPinned(free, true); });
        if (!pinned.isEmpty())
            menu->addAction(icon(QStringLiteral("pinned")), counted(tr("Unpin"), pinned), this,
                            [this, pinned] { setPinned(pinned, false); });
        menu->addAction(icon(QStringLiteral("uninstall")),
                        counted(tr("Uninstall"), installed) + QStringLiteral("…"), this,
                        [this, installed, window] { uninstall(installed, window); });
    }
    menu->addSeparator();
    QStringList names;
    for (const PackageRow &row : rows)
        names.append(row.fullName);
    menu->addAction(rows.size() == 1 ? tr("Copy Name") : tr("Copy Names"), this,
                    [names] { QApplication::clipboard()->setText(names.join(QLatin1Char('\n'))); });
}

} // namespace larkspur::ui
