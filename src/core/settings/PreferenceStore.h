#pragma once

#include <QString>
#include <QVariantMap>

#include <expected>

namespace larkspur {

/// Port: where preferences are kept between two runs of the program. Errors are one line of text. Blocking,
/// for the moment of a small file.
class PreferenceStore {
  public:
    virtual ~PreferenceStore() = default;

    /// All values by key. What is damaged is a failure, not an empty store.
    virtual std::expected<QVariantMap, QString> read() = 0;
    /// The file in which values of before are kept that could not be read; empty if there is none.
    virtual QString keptAside() const { return {}; }
    /// Puts these values in the place of what the store holds by now; the others stay. Returns all that it
    /// holds afterwards. After a failure it holds what it held before.
    virtual std::expected<QVariantMap, QString> change(const QVariantMap &values) = 0;
};

} // namespace larkspur
