#pragma once

#include "inventory/decoding/DecodingError.h"

#include <QByteArray>
#include <QStringList>

#include <simdjson.h>

#include <functional>
#include <optional>
#include <string_view>

namespace larkspur::json {

using Value = simdjson::ondemand::value;

/// Where in the document a value stands: a chain on the stack, turned into text only when something fails.
struct Path {
    const Path *parent = nullptr;
    std::string_view key = {};
    std::size_t index = 0;

    QString text() const;
};

/// Leaves a decoder at the first thing that does not fit; caught at the edge of the decoder, never outside.
struct Failure {
    DecodingError error;
    bool isFatal = false; ///< the document itself is broken: nothing after it can be trusted
};

[[noreturn]] void fail(simdjson::error_code code, const char *expected, const Path &path);
[[noreturn]] void failMissing(const char *key, const Path &path);

QString string(Value value, const Path &path);
/// Null reads as absent.
std::optional<QString> optionalString(Value value, const Path &path);
std::optional<qint64> optionalInteger(Value value, const Path &path);
/// Null reads as absent.
std::optional<bool> optionalFlag(Value value, const Path &path);
/// Null reads as an empty list.
QStringList strings(Value value, const Path &path);
/// Not for the root of a document, which is never null.
bool isNull(Value &value);

/// Calls `take(key, value, path)` for each field of an object. The key lives until the call returns.
template <typename Take>
void forEachField(Value value, const Path &path, Take take) {
    simdjson::ondemand::object object;
    if (const auto code = value.get_object().get(object))
        fail(code, "object", path);
    for (auto field : object) {
        std::string_view key;
        Value fieldValue;
        if (const auto code = field.unescaped_key().get(key))
            fail(code, "key", path);
        if (const auto code = field.value().get(fieldValue))
            fail(code, "value", path);
        take(key, fieldValue, Path{&path, key, 0});
    }
}

/// Calls `take(value, path)` for each element of an array.
template <typename Take>
void forEachElement(Value value, const Path &path, Take take) {
    simdjson::ondemand::array array;
    if (const auto code = value.get_array().get(array))
        fail(code, "array", path);
    std::size_t index = 0;
    for (auto element : array) {
        Value elementValue;
        if (const auto code = element.get(elementValue))
            fail(code, "value", path);
        take(elementValue, Path{&path, {}, index++});
    }
}

/// Runs `decode(root)` over the document in `bytes`. Text in front of the JSON (notices of an update,
/// warnings) is passed over; bytes that are no UTF-8 become U+FFFD.
template <typename T, typename Decode>
Decoded<T> document(const QByteArray &bytes, Decode decode);

/// The bytes from the document's first bracket on, with the room behind them that the parser needs.
QByteArray paddedDocument(const QByteArray &bytes);

} // namespace larkspur::json

namespace larkspur {

/// A list of which broken elements are left out: one bad entry must not lose the whole inventory.
template <typename T>
struct LossyArray {
    QList<T> elements;
    QStringList failures; ///< one line for each element that was left out

    template <typename DecodeElement>
    static LossyArray decode(json::Value value, const json::Path &path, DecodeElement decodeElement) {
        LossyArray list;
        std::optional<json::Failure> first;
        json::forEachElement(value, path, [&](json::Value element, const json::Path &at) {
            try {
                list.elements.append(decodeElement(element, at));
            } catch (const json::Failure &failure) {
                if (failure.isFatal)
                    throw;
                list.failures.append(failure.error.description());
                if (!first)
                    first = failure;
            }
        });
        if (first && list.elements.isEmpty()) // not a list without elements: one that nobody could read
            throw json::Failure(*first);
        return list;
    }
};

template <typename T, typename Decode>
Decoded<T> json::document(const QByteArray &bytes, Decode decode) {
    const QByteArray padded = paddedDocument(bytes);
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document;
    try {
        const simdjson::padded_string_view view(padded.constData(), static_cast<std::size_t>(padded.size()),
                                                static_cast<std::size_t>(padded.size()) +
                                                    simdjson::SIMDJSON_PADDING);
        const Path root;
        if (const auto code = parser.iterate(view).get(document))
            fail(code, "document", root);
        Value value;
        if (const auto code = document.get_value().get(value))
            fail(code, "document", root);
        return decode(value, root);
    } catch (const Failure &failure) {
        return std::unexpected(failure.error);
    }
}

} // namespace larkspur
