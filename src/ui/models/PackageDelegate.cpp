#include "ui/models/PackageDelegate.h"

#include "ui/models/PackageTableModel.h"
#include "ui/theme/Colours.h"
#include "ui/theme/Icons.h"

#include <QApplication>

#include <utility>

namespace larkspur::ui {

namespace {

constexpr int margin = 8;
constexpr int iconSize = 20;
constexpr int rowHeight = 46;

struct Mark {
    QString text;
    Tone tone;
};

QList<Mark> marksOf(const PackageRow &row, const PackageTableModel &model) {
    QList<Mark> marks;
    if (model.marksInstalled() && row.installed)
        marks.append({QObject::tr("Installed"), Tone::Good});
    if (row.pinned)
        marks.append({QObject::tr("Pinned"), Tone::Neutral});
    if (model.marksUpdates() && !row.snooze.isEmpty())
        marks.append({QObject::tr("Snoozed"), Tone::Neutral});
    else if (model.marksUpdates() && !row.newVersion.isEmpty())
        marks.append({QObject::tr("Update"), Tone::Attention});
    if (row.dependency)
        marks.append({QObject::tr("Dependency"), Tone::Neutral});
    return marks;
}

const PackageTableModel &modelOf(const QModelIndex &index) {
    return *static_cast<const PackageTableModel *>(index.model());
}

/// Draws the marks from the right and returns what room is left for the text.
QRect paintMarks(QPainter *painter, const QStyleOptionViewItem &option, QRect room,
                 const QList<Mark> &marks) {
    QFont font = option.font;
    font.setPointSizeF(font.pointSizeF() * 0.82);
    painter->setFont(font);
    const QFontMetrics metrics(font);
    const bool selected = option.state & QStyle::State_Selected;
    for (const Mark &mark : marks) {
        const int width = metrics.horizontalAdvance(mark.text) + 14;
        if (width > room.width() / 2)
            break;
        const QRect pill(room.right() - width, room.center().y() - 9, width, 18);
        painter->setPen(Qt::NoPen);
        painter->setBrush(selected ? option.palette.color(QPalette::HighlightedText)
                                   : toneGround(mark.tone, option.palette));
        painter->setOpacity(selected ? 0.25 : 1);
        painter->drawRoundedRect(pill, 9, 9);
        painter->setOpacity(1);
        painter->setPen(selected ? option.palette.color(QPalette::HighlightedText)
                                 : toneColour(mark.tone, option.palette));
        painter->drawText(pill, Qt::AlignCenter, mark.text);
        room.setRight(pill.left() - 6);
    }
    return room;
}

} // namespace

QSize PackageDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const {
    return {QStyledItemDelegate::sizeHint(option, index).width(), rowHeight};
}

void PackageDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const {
    if (index.column() == PackageTableModel::NameColumn)
        paintName(painter, option, index);
    else if (index.column() == PackageTableModel::SizeColumn)
        paintSize(painter, option, index);
    else
        QStyledItemDelegate::paint(painter, option, index);
}

void PackageDelegate::paintName(QPainter *painter, const QStyleOptionViewItem &option,
                                const QModelIndex &index) const {
    const PackageTableModel &model = modelOf(index);
    const PackageRow &row = model.row(index.row());
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &background, painter, option.widget);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const bool selected = option.state & QStyle::State_Selected;
    const QRect area = option.rect.adjusted(margin, 4, -margin, -4);
    const QRect picture(area.left(), area.center().y() - iconSize / 2, iconSize, iconSize);
    icon(row.id.isCask ? QStringLiteral("casks") : QStringLiteral("formulae"))
        .paint(painter, picture, Qt::AlignCenter, selected ? QIcon::Selected : QIcon::Normal);

    QRect text = area.adjusted(iconSize + margin, 0, 0, 0);
    text = paintMarks(painter, option, text, marksOf(row, model));
    const bool isTwoLines = !row.description.isEmpty();
    QFont name = option.font;
    name.setWeight(QFont::DemiBold);
    painter->setFont(name);
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
    const QRect upper = isTwoLines ? QRect(text.left(), text.top(), text.width(), text.height() / 2) : text;
    painter->drawText(upper, Qt::AlignVCenter | Qt::AlignLeft,
                      QFontMetrics(name).elidedText(row.title, Qt::ElideMiddle, upper.width()));
    if (isTwoLines) {
        const QRect lower(text.left(), text.center().y() + 1, text.width(), text.height() / 2);
        QFont small = option.font;
        small.setPointSizeF(small.pointSizeF() * 0.9);
        painter->setFont(small);
        if (!selected)
            painter->setPen(mutedText(option.palette));
        painter->drawText(lower, Qt::AlignVCenter | Qt::AlignLeft,
                          QFontMetrics(small).elidedText(row.description, Qt::ElideRight, lower.width()));
    }
    painter->restore();
}

void PackageDelegate::paintSize(QPainter *painter, const QStyleOptionViewItem &option,
                                const QModelIndex &index) const {
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    const QString text = std::exchange(background.text, QString());
    QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &background, painter, option.widget);
    const QRect area = option.rect.adjusted(margin, 0, -margin * 2, 0);
    painter->setPen(option.palette.color(option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                               : QPalette::Text));
    painter->drawText(area, Qt::AlignVCenter | Qt::AlignRight, text);
    const PackageTableModel &model = modelOf(index);
    const qint64 bytes = model.row(index.row()).bytes;
    if (bytes <= 0 || model.largestSize() <= 0)
        return;
    const int length = std::max(2, static_cast<int>(area.width() * bytes / model.largestSize()));
    QColor colour = option.palette.color(option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                               : QPalette::Highlight);
    colour.setAlphaF(0.55F);
    painter->fillRect(QRect(area.right() - length, area.bottom() - 9, length, 3), colour);
}

} // namespace larkspur::ui
