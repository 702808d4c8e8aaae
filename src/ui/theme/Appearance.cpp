#include "ui/theme/Appearance.h"

#include "ui/theme/Colours.h"

#include <QApplication>
#include <QStyle>
#include <QStyleFactory>

namespace larkspur::ui {

void applyAppearance() {
    const QString wanted = qEnvironmentVariable("LARKSPUR_APPEARANCE");
    if (wanted == QLatin1String("dark")) {
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(darkPalette());
    } else if (wanted == QLatin1String("light")) {
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(QApplication::style()->standardPalette());
    }
}

} // namespace larkspur::ui
