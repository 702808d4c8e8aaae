#include "ui/Sidebar.h"

#include "inventory/state/Inventory.h"
#include "ui/ScreenRegistry.h"
#include "ui/theme/Colours.h"
#include "ui/theme/Icons.h"

#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>

namespace larkspur::ui {

namespace {

constexpr int idRole = Qt::UserRole;
constexpr int countRole = Qt::UserRole + 1;

/// Adds the number at the right and keeps the groups' titles small.
class SidebarDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override {
        return {QStyledItemDelegate::sizeHint(option, index).width(), index.parent().isValid() ? 32 : 30};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        if (!index.parent().isValid()) {
            QFont font = option.font;
            font.setPointSizeF(font.pointSizeF() * 0.85);
            font.setWeight(QFont::DemiBold);
            painter->save();
            painter->setFont(font);
            painter->setPen(mutedText(option.palette));
            painter->drawText(option.rect.adjusted(10, 8, 0, 0), Qt::AlignVCenter | Qt::AlignLeft,
                              index.data().toString());
            painter->restore();
            return;
        }
        QStyledItemDelegate::paint(painter, option, index);
        const auto count = index.data(countRole).toLongLong();
        if (count <= 0)
            return;
        painter->save();
        const bool selected = option.state & QStyle::State_Selected;
        painter->setPen(selected ? option.palette.color(QPalette::HighlightedText)
                                 : mutedText(option.palette));
        painter->drawText(option.rect.adjusted(0, 0, -12, 0), Qt::AlignVCenter | Qt::AlignRight,
                          QString::number(count));
        painter->restore();
    }
};

} // namespace

Sidebar::Sidebar(QWidget *parent)
    : QTreeWidget(parent) {
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setIndentation(6);
    setIconSize({18, 18});
    setFrameShape(QFrame::NoFrame);
    setItemDelegate(new SidebarDelegate(this));
    setAccessibleName(tr("Screens"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMinimumWidth(170);
    setExpandsOnDoubleClick(false);
    QPalette ground = palette();
    ground.setColor(QPalette::Base, raisedSurface(palette()));
    setPalette(ground);
    QTreeWidgetItem *group = nullptr;
    for (const ScreenEntry &entry : screenRegistry()) {
        if (!group || group->text(0) != entry.group) {
            group = new QTreeWidgetItem(this, {entry.group});
            group->setFlags(Qt::ItemIsEnabled);
            group->setExpanded(true);
        }
        auto *item = new QTreeWidgetItem(group, {entry.title});
        item->setIcon(0, icon(entry.icon));
        item->setData(0, idRole, entry.id);
    }
    connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        if (item && item->parent())
            Q_EMIT screenChosen(item->data(0, idRole).toString());
    });
}

QTreeWidgetItem *Sidebar::itemOf(const QString &id) const {
    for (int i = 0; i < topLevelItemCount(); ++i)
        for (int j = 0; j < topLevelItem(i)->childCount(); ++j)
            if (topLevelItem(i)->child(j)->data(0, idRole) == id)
                return topLevelItem(i)->child(j);
    return nullptr;
}

void Sidebar::setCurrentScreen(const QString &id) {
    if (QTreeWidgetItem *item = itemOf(id))
        setCurrentItem(item);
}

void Sidebar::updateCounts(const Inventory &inventory, const UserDataManager &userData) {
    for (const ScreenEntry &entry : screenRegistry()) {
        if (!entry.count)
            continue;
        QTreeWidgetItem *item = itemOf(entry.id);
        const auto count = static_cast<qlonglong>(entry.count(inventory, userData));
        item->setData(0, countRole, count);
        item->setData(0, Qt::AccessibleTextRole, QStringLiteral("%1, %2").arg(entry.title).arg(count));
    }
}

void Sidebar::setSimpleMode(bool simple) {
    for (const ScreenEntry &entry : screenRegistry())
        itemOf(entry.id)->setHidden(simple && !entry.inSimpleMode);
    for (int i = 0; i < topLevelItemCount(); ++i) {
        bool hasVisible = false;
        for (int j = 0; j < topLevelItem(i)->childCount(); ++j)
            hasVisible = hasVisible || !topLevelItem(i)->child(j)->isHidden();
        topLevelItem(i)->setHidden(!hasVisible);
    }
}

} // namespace larkspur::ui
