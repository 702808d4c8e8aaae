#include "ui/timemachine/DiffView.h"

#include <QHeaderView>

namespace larkspur::ui {

namespace {

QString nameOf(const SnapshotEntry &entry) {
    return entry.isCask ? DiffView::tr("%1 (cask)").arg(entry.name) : entry.name;
}

} // namespace

DiffView::DiffView(QWidget *parent)
    : QTreeWidget(parent) {
    setColumnCount(2);
    setHeaderHidden(true);
    setIndentation(12);
    setRootIsDecorated(false);
    setSelectionMode(QAbstractItemView::NoSelection);
    setFrameShape(QFrame::NoFrame);
    setAccessibleName(tr("Differences"));
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    header()->setStretchLastSection(false);
}

void DiffView::showText(const QString &text) {
    clear();
    auto *item = new QTreeWidgetItem(this, {text});
    item->setFirstColumnSpanned(true);
    item->setForeground(0, palette().brush(QPalette::PlaceholderText));
}

void DiffView::addGroup(const QString &title, const QList<QStringList> &rows) {
    if (rows.isEmpty())
        return;
    auto *group = new QTreeWidgetItem(this, {QStringLiteral("%1 (%2)").arg(title).arg(rows.size())});
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    group->setFont(0, bold);
    group->setFirstColumnSpanned(true);
    for (const QStringList &row : rows)
        new QTreeWidgetItem(group, row);
    group->setExpanded(true);
}

void DiffView::showDiff(const SnapshotDiff &diff, const QString &removedTitle, const QString &addedTitle) {
    clear();
    QList<QStringList> removed;
    QList<QStringList> added;
    QList<QStringList> changed;
    for (const SnapshotEntry &entry : diff.removed)
        removed.append({nameOf(entry), entry.version});
    for (const SnapshotEntry &entry : diff.added)
        added.append({nameOf(entry), entry.version});
    for (const SnapshotVersionChange &change : diff.changed)
        changed.append({nameOf(change.entry),
                        QStringLiteral("%1 → %2").arg(change.entry.version, change.currentVersion)});
    addGroup(removedTitle, removed);
    addGroup(addedTitle, added);
    addGroup(tr("Other version"), changed);
}

} // namespace larkspur::ui
