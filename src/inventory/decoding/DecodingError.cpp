#include "inventory/decoding/DecodingError.h"

namespace larkspur {

QString DecodingError::description() const {
    const QString where = QStringLiteral(" at '") + path + QLatin1Char('\'');
    switch (kind) {
    case Kind::TypeMismatch:
        return QStringLiteral("Type mismatch: expected ") + subject + where;
    case Kind::ValueMissing:
        return QStringLiteral("Value not found: expected ") + subject + where;
    case Kind::KeyMissing:
        return QStringLiteral("Key '") + subject + QLatin1Char('\'') + QStringLiteral(" not found") + where;
    case Kind::TooLong:
        return QStringLiteral("More than ") + subject + where;
    case Kind::DataCorrupted:
        break;
    }
    return QStringLiteral("Data corrupted") + where + QLatin1Char(' ') + subject;
}

} // namespace larkspur
