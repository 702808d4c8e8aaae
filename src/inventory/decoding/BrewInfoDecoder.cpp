#include "inventory/decoding/BrewInfoDecoder.h"

#include "inventory/decoding/CaskArtifacts.h"

namespace larkspur {

namespace {

using json::Path;
using json::Value;

FormulaVersions decodeVersions(Value value, const Path &path) {
    FormulaVersions versions;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "stable")
            versions.stable = json::optionalString(field, at);
        else if (key == "head")
            versions.head = json::optionalString(field, at);
    });
    return versions;
}

std::optional<FormulaURLInfo> decodeUrl(Value value, const Path &path) {
    if (json::isNull(value))
        return std::nullopt;
    std::optional<FormulaURLInfo> info;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key != "url")
            return;
        if (auto url = json::optionalString(field, at))
            info = FormulaURLInfo{*url};
    });
    return info;
}

FormulaURLs decodeUrls(Value value, const Path &path) {
    FormulaURLs urls;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "stable")
            urls.stable = decodeUrl(field, at);
        else if (key == "head")
            urls.head = decodeUrl(field, at);
    });
    return urls;
}

FormulaBottleFile decodeBottleFile(Value value, const Path &path) {
    FormulaBottleFile file;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "url")
            file.url = json::optionalString(field, at);
        else if (key == "sha256")
            file.sha256 = json::optionalString(field, at);
    });
    return file;
}

FormulaBottleStable decodeStableBottle(Value value, const Path &path) {
    FormulaBottleStable stable;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key != "files" || json::isNull(field))
            return;
        json::forEachField(field, at, [&](std::string_view tag, Value file, const Path &fileAt) {
            const QString name = QString::fromUtf8(tag.data(), static_cast<qsizetype>(tag.size()));
            stable.files.insert(name, decodeBottleFile(file, fileAt));
        });
    });
    return stable;
}

FormulaBottle decodeBottle(Value value, const Path &path) {
    FormulaBottle bottle;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "stable" && !json::isNull(field))
            bottle.stable = decodeStableBottle(field, at);
    });
    return bottle;
}

InstalledInfo decodeInstalled(Value value, const Path &path) {
    InstalledInfo info;
    std::optional<QString> version;
    std::optional<bool> asDependency;
    std::optional<bool> onRequest;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "version")
            version = json::string(field, at);
        else if (key == "installed_as_dependency")
            asDependency = json::optionalFlag(field, at);
        else if (key == "installed_on_request")
            onRequest = json::optionalFlag(field, at);
        else if (key == "time")
            info.time = json::optionalInteger(field, at);
    });
    if (!version)
        json::failMissing("version", path);
    info.version = *version;
    info.installedOnRequest = onRequest.value_or(!asDependency.value_or(false));
    info.installedAsDependency = asDependency.value_or(!info.installedOnRequest);
    return info;
}

FormulaJSON decodeFormula(Value value, const Path &path) {
    FormulaJSON formula;
    std::optional<QString> name;
    std::optional<QString> fullName;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "name")
            name = json::string(field, at);
        else if (key == "full_name")
            fullName = json::optionalString(field, at);
        else if (key == "desc")
            formula.desc = json::optionalString(field, at);
        else if (key == "homepage")
            formula.homepage = json::optionalString(field, at);
        else if (key == "license")
            formula.license = json::optionalString(field, at);
        else if (key == "caveats")
            formula.caveats = json::optionalString(field, at);
        else if (key == "dependencies")
            formula.dependencies = json::strings(field, at);
        else if (key == "versions" && !json::isNull(field))
            formula.versions = decodeVersions(field, at);
        else if (key == "urls" && !json::isNull(field))
            formula.urls = decodeUrls(field, at);
        else if (key == "bottle" && !json::isNull(field))
            formula.bottle = decodeBottle(field, at);
        else if (key == "installed" && !json::isNull(field))
            json::forEachElement(field, at, [&](Value element, const Path &elementAt) {
                formula.installed.append(decodeInstalled(element, elementAt));
            });
    });
    if (!name)
        json::failMissing("name", path);
    formula.name = *name;
    formula.fullName = fullName.value_or(*name);
    return formula;
}

CaskJSON decodeCask(Value value, const Path &path) {
    CaskJSON cask;
    std::optional<QString> token;
    json::forEachField(value, path, [&](std::string_view key, Value field, const Path &at) {
        if (key == "token")
            token = json::string(field, at);
        else if (key == "full_token")
            cask.fullToken = json::optionalString(field, at);
        else if (key == "name")
            cask.name = json::strings(field, at);
        else if (key == "version")
            cask.version = json::optionalString(field, at).value_or(QString());
        else if (key == "desc")
            cask.desc = json::optionalString(field, at);
        else if (key == "homepage")
            cask.homepage = json::optionalString(field, at);
        else if (key == "url")
            cask.url = json::optionalString(field, at);
        else if (key == "installed")
            cask.installed = json::optionalString(field, at);
        else if (key == "caveats")
            cask.caveats = json::optionalString(field, at);
        else if (key == "tap")
            cask.tap = json::optionalString(field, at);
        else if (key == "ruby_source_path")
            cask.rubySourcePath = json::optionalString(field, at);
        else if (key == "caveats_rosetta")
            cask.requiresRosetta = json::optionalFlag(field, at).value_or(false);
        else if (key == "disabled")
            cask.disabled = json::optionalFlag(field, at).value_or(false);
        else if (key == "bundle_short_version")
            cask.bundleShortVersion = json::optionalString(field, at);
        else if (key == "bundle_version")
            cask.bundleVersion = json::optionalString(field, at);
        else if (key == "artifacts" && !json::isNull(field))
            readCaskArtifacts(field, at, cask);
    });
    if (!token)
        json::failMissing("token", path);
    cask.token = *token;
    return cask;
}

} // namespace

Decoded<BrewInfoResponse> decodeBrewInfo(const QByteArray &bytes) {
    return json::document<BrewInfoResponse>(bytes, [](Value root, const Path &path) {
        std::optional<LossyArray<FormulaJSON>> formulae;
        std::optional<LossyArray<CaskJSON>> casks;
        json::forEachField(root, path, [&](std::string_view key, Value field, const Path &at) {
            if (key == "formulae" && !json::isNull(field))
                formulae = LossyArray<FormulaJSON>::decode(field, at, decodeFormula);
            else if (key == "casks" && !json::isNull(field))
                casks = LossyArray<CaskJSON>::decode(field, at, decodeCask);
        });
        if (!formulae || !casks)
            json::failMissing(formulae ? "casks" : "formulae", path);
        return BrewInfoResponse{std::move(*formulae), std::move(*casks)};
    });
}

Decoded<LossyArray<CaskJSON>> decodeCaskCatalogue(const QByteArray &bytes) {
    return json::document<LossyArray<CaskJSON>>(bytes, [](Value root, const Path &path) {
        return LossyArray<CaskJSON>::decode(root, path, decodeCask);
    });
}

} // namespace larkspur
