#include "inventory/decoding/ListDecoders.h"

namespace larkspur {

namespace {

using json::Path;
using json::Value;

template <typename Record>
Record decodeOutdatedPackage(Value value, const Path &path) {
    Record package;
    std::optional<QString> name;
    std::optional<QString> current;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "name")
            name = json::string(field, at);
        else if (key == "installed_versions")
            package.installedVersions = json::strings(field, at);
        else if (key == "current_version")
            current = json::string(field, at);
        else if (key == "pinned")
            package.pinned = json::optionalFlag(field, at).value_or(false);
    });
    if (!name)
        json::failMissing("name", path);
    if (!current)
        json::failMissing("current_version", path);
    package.name = *name;
    package.currentVersion = *current;
    return package;
}

BrewServiceInfo decodeService(Value value, const Path &path) {
    BrewServiceInfo service;
    std::optional<QString> name;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "name")
            name = json::string(field, at);
        else if (key == "status")
            service.status = serviceStatusFromText(json::optionalString(field, at).value_or(QString()));
        else if (key == "user")
            service.user = json::optionalString(field, at);
        else if (key == "file")
            service.file = json::optionalString(field, at);
        else if (key == "exit_code")
            service.exitCode = json::optionalInteger(field, at);
    });
    if (!name)
        json::failMissing("name", path);
    service.name = *name;
    return service;
}

TapInfo decodeTap(Value value, const Path &path) {
    TapInfo tap;
    std::optional<QString> name;
    std::optional<qint64> formulae;
    std::optional<qint64> casks;
    std::optional<qint64> commands;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "name")
            name = json::string(field, at);
        else if (key == "user")
            tap.user = json::optionalString(field, at).value_or(QString());
        else if (key == "repo")
            tap.repo = json::optionalString(field, at).value_or(QString());
        else if (key == "path")
            tap.path = json::optionalString(field, at).value_or(QString());
        else if (key == "formula_names")
            tap.formulaNames = json::strings(field, at);
        else if (key == "cask_tokens")
            tap.caskTokens = json::strings(field, at);
        else if (key == "command_files")
            tap.commandNames = json::strings(field, at);
        else if (key == "formula_count")
            formulae = json::optionalInteger(field, at);
        else if (key == "cask_count")
            casks = json::optionalInteger(field, at);
        else if (key == "command_count")
            commands = json::optionalInteger(field, at);
        else if (key == "remote")
            tap.remote = json::optionalString(field, at);
        else if (key == "official")
            tap.isOfficial = json::optionalFlag(field, at).value_or(false);
        else if (key == "installed")
            tap.isInstalled = json::optionalFlag(field, at).value_or(false);
        else if (key == "trusted")
            tap.isTrusted = json::optionalFlag(field, at);
    });
    if (!name)
        json::failMissing("name", path);
    tap.name = *name;
    tap.formulaCount = static_cast<int>(formulae.value_or(tap.formulaNames.size()));
    tap.caskCount = static_cast<int>(casks.value_or(tap.caskTokens.size()));
    tap.commandCount = static_cast<int>(commands.value_or(tap.commandNames.size()));
    return tap;
}

QSet<QString> asSet(const QStringList &names) {
    QSet<QString> set;
    for (const QString &name : names)
        set.insert(name.toLower());
    return set;
}

} // namespace

Decoded<OutdatedResponse> decodeOutdated(const QByteArray &bytes) {
    return json::document<OutdatedResponse>(bytes, [](Value root, const Path &path) {
        std::optional<LossyArray<OutdatedFormula>> formulae;
        std::optional<LossyArray<OutdatedCask>> casks;
        json::forEachField(root, path, [&](std::string_view key, Value field, const Path &at) {
            if (key == "formulae" && !json::isNull(field))
                formulae =
                    LossyArray<OutdatedFormula>::decode(field, at, decodeOutdatedPackage<OutdatedFormula>);
            else if (key == "casks" && !json::isNull(field))
                casks = LossyArray<OutdatedCask>::decode(field, at, decodeOutdatedPackage<OutdatedCask>);
        });
        if (!formulae || !casks)
            json::failMissing(formulae ? "casks" : "formulae", path);
        return OutdatedResponse{std::move(*formulae), std::move(*casks)};
    });
}

Decoded<LossyArray<BrewServiceInfo>> decodeServices(const QByteArray &bytes) {
    return json::document<LossyArray<BrewServiceInfo>>(bytes, [](Value root, const Path &path) {
        return LossyArray<BrewServiceInfo>::decode(root, path, decodeService);
    });
}

Decoded<LossyArray<TapInfo>> decodeTaps(const QByteArray &bytes) {
    return json::document<LossyArray<TapInfo>>(bytes, [](Value root, const Path &path) {
        return LossyArray<TapInfo>::decode(root, path, decodeTap);
    });
}

Decoded<TrustState> decodeTrust(const QByteArray &bytes) {
    return json::document<TrustState>(bytes, [](Value root, const Path &path) {
        TrustState trust;
        json::forEachField(root, path, [&](std::string_view key, Value field, const Path &at) {
            if (key == "taps")
                trust.taps = asSet(json::strings(field, at));
            else if (key == "formulae")
                trust.formulae = asSet(json::strings(field, at));
            else if (key == "casks")
                trust.casks = asSet(json::strings(field, at));
        });
        return trust;
    });
}

} // namespace larkspur
