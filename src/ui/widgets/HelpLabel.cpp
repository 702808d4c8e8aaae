#include "ui/widgets/HelpLabel.h"

#include <QLabel>

namespace larkspur::ui {

QLabel *helpLabel(const QString &text) {
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.92);
    label->setFont(font);
    return label;
}

} // namespace larkspur::ui
