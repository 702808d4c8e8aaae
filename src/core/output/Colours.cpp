#include "core/output/Colours.h"

#include <QRegularExpression>

namespace larkspur {

QString withoutColours(QString text) {
    if (!text.contains(QChar(0x1B)))
        return text;
    static const QRegularExpression colour(QStringLiteral("\u001B\\[[0-9;]*m"));
    return text.remove(colour);
}

} // namespace larkspur
