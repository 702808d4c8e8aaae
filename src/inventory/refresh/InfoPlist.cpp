#include "inventory/refresh/InfoPlist.h"

#include "core/files/WholeFile.h"

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace larkspur {

namespace {

constexpr qint64 largestPlist = 4 * 1024 * 1024; // bytes

struct FreePlist {
    void operator()(void *node) const { plist_free(node); }
};
using Plist = std::unique_ptr<void, FreePlist>;

std::optional<QString> stringItem(plist_t dictionary, const char *key) {
    const plist_t item = plist_dict_get_item(dictionary, key);
    if (!item || plist_get_node_type(item) != PLIST_STRING)
        return std::nullopt;
    char *text = nullptr;
    plist_get_string_val(item, &text);
    if (!text)
        return std::nullopt;
    const QString value = QString::fromUtf8(text);
    std::free(text); // NOLINT: libplist allocates with malloc
    return value;
}

} // namespace

std::optional<InfoPlist> readInfoPlist(const QString &path) {
    const auto bytes = readWholeFile(path, largestPlist);
    if (!bytes)
        return std::nullopt;
    plist_t parsed = nullptr;
    plist_from_memory(bytes->constData(), static_cast<uint32_t>(bytes->size()), &parsed);
    const Plist root(parsed);
    if (!parsed || plist_get_node_type(parsed) != PLIST_DICT)
        return std::nullopt;
    return InfoPlist{stringItem(parsed, "CFBundleShortVersionString"), stringItem(parsed, "CFBundleVersion")};
}

} // namespace larkspur
