#include "inventory/decoding/JsonReader.h"

namespace larkspur::json {

namespace {

QString fromView(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Errors after which the parser still knows where it is.
bool isAboutOneValue(simdjson::error_code code) {
    return code == simdjson::INCORRECT_TYPE || code == simdjson::NO_SUCH_FIELD ||
           code == simdjson::NUMBER_ERROR || code == simdjson::NUMBER_OUT_OF_RANGE;
}

/// Where the first line begins that starts with a bracket.
qsizetype documentStart(const QByteArray &text) {
    qsizetype line = 0;
    while (line < text.size()) {
        qsizetype first = line;
        while (first < text.size() && (text[first] == ' ' || text[first] == '\t'))
            ++first;
        if (first < text.size() && (text[first] == '{' || text[first] == '['))
            return first;
        const qsizetype end = text.indexOf('\n', line);
        if (end < 0)
            break;
        line = end + 1;
    }
    return 0;
}

} // namespace

QString Path::text() const {
    QStringList parts;
    for (const Path *node = this; node->parent; node = node->parent)
        parts.prepend(node->key.data() ? fromView(node->key) : QString::number(node->index));
    return parts.join(QLatin1Char('.'));
}

void fail(simdjson::error_code code, const char *expected, const Path &path) {
    if (isAboutOneValue(code))
        throw Failure{{DecodingError::Kind::TypeMismatch, QString::fromLatin1(expected), path.text()}, false};
    throw Failure{
        {DecodingError::Kind::DataCorrupted, QString::fromLatin1(simdjson::error_message(code)), path.text()},
        true};
}

void failMissing(const char *key, const Path &path) {
    throw Failure{{DecodingError::Kind::KeyMissing, QString::fromLatin1(key), path.text()}, false};
}

bool isNull(Value &value) {
    bool null = false;
    return value.is_null().get(null) == simdjson::SUCCESS && null;
}

QString string(Value value, const Path &path) {
    std::string_view text;
    if (isNull(value))
        throw Failure{{DecodingError::Kind::ValueMissing, QStringLiteral("string"), path.text()}, false};
    if (const auto code = value.get_string().get(text))
        fail(code, "string", path);
    return fromView(text);
}

std::optional<QString> optionalString(Value value, const Path &path) {
    if (isNull(value))
        return std::nullopt;
    return string(value, path);
}

std::optional<qint64> optionalInteger(Value value, const Path &path) {
    if (isNull(value))
        return std::nullopt;
    std::int64_t number = 0;
    if (const auto code = value.get_int64().get(number))
        fail(code, "integer", path);
    return number;
}

std::optional<bool> optionalFlag(Value value, const Path &path) {
    if (isNull(value))
        return std::nullopt;
    bool flag = false;
    if (const auto code = value.get_bool().get(flag))
        fail(code, "bool", path);
    return flag;
}

QStringList strings(Value value, const Path &path) {
    QStringList list;
    if (isNull(value))
        return list;
    forEachElement(value, path, [&list](Value element, const Path &at) { list.append(string(element, at)); });
    return list;
}

QByteArray paddedDocument(const QByteArray &bytes) {
    QByteArray text = bytes;
    if (!simdjson::validate_utf8(bytes.constData(), static_cast<std::size_t>(bytes.size())))
        text = QString::fromUtf8(bytes).toUtf8();
    if (const qsizetype start = documentStart(text); start > 0)
        text.remove(0, start);
    text.reserve(text.size() + static_cast<qsizetype>(simdjson::SIMDJSON_PADDING));
    return text;
}

} // namespace larkspur::json
