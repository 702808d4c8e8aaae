#pragma once

#include <QStyledItemDelegate>

namespace larkspur::ui {

/// Draws a package's name with its description below, its marks at the right, and its size as a bar.
class PackageDelegate : public QStyledItemDelegate {
    Q_OBJECT
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

  private:
    void paintName(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintSize(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
};

} // namespace larkspur::ui
