#pragma once

#include "operations/snapshots/Snapshot.h"

#include <QWidget>

namespace larkspur::ui {

/// How many packages there were at each restore point, over time.
class PackagesChart : public QWidget {
    Q_OBJECT
  public:
    explicit PackagesChart(QWidget *parent = nullptr);

    /// Newest first, as the manager keeps them.
    void setSnapshots(const QList<Snapshot> &snapshots);
    void select(const QUuid &id);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    struct Point {
        QUuid id;
        QDateTime date;
        qsizetype packages = 0;
    };
    QPointF place(const Point &point) const;

    QList<Point> m_points; ///< oldest first
    QUuid m_selected;
};

} // namespace larkspur::ui
