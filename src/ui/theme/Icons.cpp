#include "ui/theme/Icons.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

namespace larkspur::ui {

namespace {

class TintedIcon final : public QIconEngine {
  public:
    explicit TintedIcon(const QString &path)
        : m_path(path) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            m_svg = file.readAll();
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override {
        QByteArray tinted = m_svg;
        tinted.replace("#000", colour(mode).name(QColor::HexRgb).toLatin1());
        QSvgRenderer renderer(tinted);
        renderer.render(painter, rect);
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }

    QIconEngine *clone() const override { return new TintedIcon(m_path); }

  private:
    static QColor colour(QIcon::Mode mode) {
        const QPalette palette = QApplication::palette();
        if (mode == QIcon::Selected)
            return palette.color(QPalette::HighlightedText);
        return palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active,
                             QPalette::WindowText);
    }

    QString m_path;
    QByteArray m_svg;
};

} // namespace

QIcon icon(const QString &name) {
    return QIcon(new TintedIcon(QStringLiteral(":/icons/%1.svg").arg(name)));
}

} // namespace larkspur::ui
