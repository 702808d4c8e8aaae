#pragma once

#include <QString>

#include <expected>

namespace larkspur {

/// Why a JSON document or a part of it could not become a record.
struct DecodingError {
    enum class Kind { TypeMismatch, ValueMissing, KeyMissing, DataCorrupted, TooLong };

    Kind kind = Kind::DataCorrupted;
    QString subject; ///< the expected type, the missing key, the most there may be, or the parser's own
                     ///< description
    QString path;    ///< keys and indices that lead to the value, joined with "."

    /// One line for the log.
    QString description() const;
};

template <typename T>
using Decoded = std::expected<T, DecodingError>;

} // namespace larkspur
