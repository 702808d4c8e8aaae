#include "ui/timemachine/PackagesChart.h"

#include "ui/theme/Colours.h"

#include <QLocale>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace larkspur::ui {

namespace {

constexpr int margin = 14;
constexpr int labelHeight = 16;

} // namespace

PackagesChart::PackagesChart(QWidget *parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("Packages over time"));
}

void PackagesChart::setSnapshots(const QList<Snapshot> &snapshots) {
    m_points.clear();
    for (const Snapshot &snapshot : snapshots)
        m_points.prepend({snapshot.id, snapshot.date, snapshot.packageCount()});
    setVisible(m_points.size() > 1);
    update();
}

void PackagesChart::select(const QUuid &id) {
    m_selected = id;
    update();
}

QSize PackagesChart::sizeHint() const {
    return {300, 92};
}

QPointF PackagesChart::place(const Point &point) const {
    const auto [fewest, most] = std::ranges::minmax(m_points, {}, &Point::packages);
    const double span = static_cast<double>(m_points.first().date.msecsTo(m_points.last().date));
    const double across =
        span > 0 ? static_cast<double>(m_points.first().date.msecsTo(point.date)) / span : 0.5;
    const double range = static_cast<double>(std::max<qsizetype>(most.packages - fewest.packages, 4));
    const double up = static_cast<double>(point.packages - fewest.packages) / range;
    const double ground = height() - labelHeight - 8;
    return {margin + across * (width() - 2 * margin), ground - up * (ground - 16)};
}

void PackagesChart::paintEvent(QPaintEvent *) {
    if (m_points.size() < 2)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor line = palette().color(QPalette::Highlight);
    QPainterPath path(place(m_points.first()));
    for (const Point &point : m_points)
        path.lineTo(place(point));
    QPainterPath area = path;
    const double ground = height() - labelHeight;
    area.lineTo(place(m_points.last()).x(), ground);
    area.lineTo(place(m_points.first()).x(), ground);
    QColor light = line;
    light.setAlphaF(0.14F);
    painter.fillPath(area, light);
    painter.setPen(QPen(line, 1.6));
    painter.drawPath(path);
    for (const Point &point : m_points) {
        const bool isSelected = point.id == m_selected;
        painter.setBrush(isSelected ? line : palette().color(QPalette::Base));
        painter.drawEllipse(place(point), isSelected ? 4.5 : 2.6, isSelected ? 4.5 : 2.6);
    }
    painter.setPen(mutedText(palette()));
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    const QRect labels(margin, height() - labelHeight, width() - 2 * margin, labelHeight);
    const auto text = [](const Point &point) {
        return tr("%1 · %2 packages")
            .arg(QLocale().toString(point.date.toLocalTime().date(), QLocale::ShortFormat))
            .arg(point.packages);
    };
    painter.drawText(labels, Qt::AlignLeft | Qt::AlignVCenter, text(m_points.first()));
    painter.drawText(labels, Qt::AlignRight | Qt::AlignVCenter, text(m_points.last()));
}

} // namespace larkspur::ui
