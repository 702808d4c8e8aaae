#include "inventory/decoding/CaskArtifacts.h"

#include <algorithm>
#include <array>
#include <ranges>

namespace larkspur {

namespace {

using json::Path;
using json::Value;

QString fromView(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool isType(Value &value, simdjson::ondemand::json_type type) {
    simdjson::ondemand::json_type found{};
    return value.type().get(found) == simdjson::SUCCESS && found == type;
}

constexpr auto text = simdjson::ondemand::json_type::string;
constexpr auto list = simdjson::ondemand::json_type::array;
constexpr auto object = simdjson::ondemand::json_type::object;

std::string_view lastComponent(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

/// One "app" stanza: the bundle's name, or what an options object renames it to.
void readApp(Value stanza, const Path &path, QStringList &appNames) {
    QString name;
    json::forEachElement(stanza, path, [&](Value element, const Path &at) {
        if (isType(element, text)) {
            name = json::string(element, at);
        } else if (isType(element, object)) {
            json::forEachField(element, at, [&](std::string_view key, Value option, const Path &optionAt) {
                if (key == "target" && isType(option, text))
                    name = json::string(option, optionAt).section(QLatin1Char('/'), -1);
            });
        }
    });
    if (!name.isEmpty())
        appNames.append(name.section(QLatin1Char('/'), -1));
}

/// A reverse-DNS name such as "com.example.thing": three parts or more of letters, digits, "-" and "_".
bool looksLikeBundleID(std::string_view name) {
    int parts = 0;
    for (const auto &part : std::views::split(name, '.')) {
        const std::string_view word(part.begin(), part.end());
        const bool isWord = !word.empty() && std::ranges::all_of(word, [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
                   c == '_';
        });
        if (!isWord)
            return false;
        ++parts;
    }
    return parts >= 3 && !(name.front() >= '0' && name.front() <= '9');
}

/// The bundle identifier in a value of an "uninstall" or "zap" stanza: the value itself, or the name of a
/// file that is called after it.
std::string_view bundleIDIn(std::string_view value) {
    static constexpr std::array<std::string_view, 4> suffixes{".plist", ".savedState", ".binarycookies", "*"};
    std::string_view name = lastComponent(value);
    for (bool cut = true; cut;) {
        cut = false;
        for (const std::string_view suffix : suffixes)
            if (name.ends_with(suffix)) {
                name.remove_suffix(suffix.size());
                cut = true;
            }
    }
    return !name.empty() && looksLikeBundleID(name) ? name : std::string_view();
}

/// Every string in a directive's value, single or in a list.
template <typename Take>
void forEachString(Value value, const Path &path, Take take) {
    if (isType(value, text)) {
        std::string_view found;
        if (const auto code = value.get_string().get(found))
            json::fail(code, "string", path);
        take(found);
    } else if (isType(value, list)) {
        json::forEachElement(value, path, [&](Value element, const Path &at) {
            std::string_view found;
            if (!isType(element, text))
                return;
            if (const auto code = element.get_string().get(found))
                json::fail(code, "string", at);
            take(found);
        });
    }
}

/// Stanzas and directives that Homebrew carries out with sudo.
bool wantsAdministrator(std::string_view word) {
    static constexpr std::array<std::string_view, 6> words{"pkg",     "installer", "keyboard_layout",
                                                           "pkgutil", "delete",    "kext"};
    return std::ranges::find(words, word) != words.end();
}

/// An "uninstall" or "zap" stanza: a list of objects, each from a directive to its values.
void readStanzaValues(Value stanza, const Path &path, CaskJSON &cask, bool isZap) {
    if (!isType(stanza, list))
        return;
    json::forEachElement(stanza, path, [&](Value element, const Path &at) {
        if (!isType(element, object))
            return;
        json::forEachField(element, at, [&](std::string_view key, Value directive, const Path &directiveAt) {
            cask.mayNeedAdministrator = cask.mayNeedAdministrator || (!isZap && wantsAdministrator(key));
            forEachString(directive, directiveAt, [&](std::string_view value) {
                const std::string_view name = bundleIDIn(value);
                if (name.empty())
                    return;
                if (const QString hint = fromView(name); !cask.bundleIDHints.contains(hint))
                    cask.bundleIDHints.append(hint);
            });
        });
    });
}

} // namespace

void readCaskArtifacts(Value artifacts, const Path &path, CaskJSON &cask) {
    json::forEachElement(artifacts, path, [&](Value entry, const Path &at) {
        if (!isType(entry, object))
            return;
        json::forEachField(entry, at, [&](std::string_view stanza, Value value, const Path &stanzaAt) {
            cask.mayNeedAdministrator = cask.mayNeedAdministrator || wantsAdministrator(stanza);
            if (stanza == "app" && isType(value, list))
                readApp(value, stanzaAt, cask.appNames);
            else if (stanza == "uninstall" || stanza == "zap")
                readStanzaValues(value, stanzaAt, cask, stanza == "zap");
        });
    });
}

} // namespace larkspur
