#pragma once

#include <QByteArray>

namespace larkspur::test {

/// JSON written with single quotes, which read better inside a string literal.
inline QByteArray asJson(QByteArray text) {
    return text.replace('\'', '"');
}

} // namespace larkspur::test
