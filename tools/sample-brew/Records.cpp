#include "Brew.h"

#include <QJsonArray>

namespace sample {

namespace {

QJsonValue orNull(const QString &text) {
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonArray installedJson(const Brew &brew, const Formula &formula) {
    QJsonArray installed;
    for (const QString &version : brew.prefix.versions(formula)) {
        const QJsonObject receipt = brew.prefix.receipt(formula, version);
        installed.append(QJsonObject{
            {QStringLiteral("version"), version},
            {QStringLiteral("used_options"), QJsonArray()},
            {QStringLiteral("built_as_bottle"), true},
            {QStringLiteral("poured_from_bottle"), true},
            {QStringLiteral("time"), receipt.value(QLatin1String("time"))},
            {QStringLiteral("runtime_dependencies"), QJsonArray()},
            {QStringLiteral("installed_on_request"), receipt.value(QLatin1String("installed_on_request"))}});
    }
    return installed;
}

} // namespace

QJsonObject formulaJson(const Brew &brew, const Formula &formula) {
    const QString source =
        QStringLiteral("https://example.com/%1/%1-%2.tar.gz").arg(formula.name, formula.version);
    return {{QStringLiteral("name"), formula.name},
            {QStringLiteral("full_name"), formula.fullName()},
            {QStringLiteral("tap"), formula.tap},
            {QStringLiteral("oldnames"), QJsonArray()},
            {QStringLiteral("aliases"), QJsonArray()},
            {QStringLiteral("desc"), formula.desc},
            {QStringLiteral("license"), formula.license},
            {QStringLiteral("homepage"), QStringLiteral("https://example.com/") + formula.name},
            {QStringLiteral("versions"), QJsonObject{{QStringLiteral("stable"), formula.version},
                                                     {QStringLiteral("head"), QJsonValue::Null},
                                                     {QStringLiteral("bottle"), true}}},
            {QStringLiteral("urls"),
             QJsonObject{{QStringLiteral("stable"), QJsonObject{{QStringLiteral("url"), source},
                                                                {QStringLiteral("tag"), QJsonValue::Null}}}}},
            {QStringLiteral("bottle"), QJsonObject()},
            {QStringLiteral("keg_only"), formula.kegOnly},
            {QStringLiteral("dependencies"), QJsonArray::fromStringList(formula.dependencies)},
            {QStringLiteral("caveats"), orNull(formula.caveats)},
            {QStringLiteral("installed"), installedJson(brew, formula)},
            {QStringLiteral("linked_keg"), orNull(brew.prefix.linkedVersion(formula))},
            {QStringLiteral("pinned"), brew.prefix.isPinned(formula.name, false)},
            {QStringLiteral("outdated"), brew.isOutdated(formula)},
            {QStringLiteral("deprecated"), false},
            {QStringLiteral("disabled"), false}};
}

namespace {

bool wantsSudo(const Cask &cask) {
    return cask.behaviour == QLatin1String("wants-password") ||
           cask.behaviour == QLatin1String("rejects-first-password");
}

} // namespace

QJsonObject caskJson(const Brew &brew, const Cask &cask) {
    const QString installed = brew.prefix.installedVersion(cask);
    const QString bundle = brew.prefix.bundleVersion(cask);
    const QString identifier = QStringLiteral("com.example.") + cask.token;
    return {
        {QStringLiteral("token"), cask.token},
        {QStringLiteral("full_token"), cask.fullToken()},
        {QStringLiteral("tap"), cask.tap},
        {QStringLiteral("name"), QJsonArray::fromStringList(cask.names)},
        {QStringLiteral("desc"), cask.desc},
        {QStringLiteral("homepage"), QStringLiteral("https://example.com/") + cask.token},
        {QStringLiteral("url"),
         QStringLiteral("https://example.com/%1-%2.zip").arg(cask.token, cask.version)},
        {QStringLiteral("version"), cask.version},
        {QStringLiteral("installed"), orNull(installed)},
        {QStringLiteral("bundle_version"), orNull(QString(bundle).remove(QLatin1Char('.')))},
        {QStringLiteral("bundle_short_version"), orNull(bundle)},
        {QStringLiteral("pinned"), brew.prefix.isPinned(cask.token, true)},
        {QStringLiteral("outdated"), brew.isOutdated(cask)},
        {QStringLiteral("sha256"), QStringLiteral("no_check")},
        {QStringLiteral("artifacts"),
         QJsonArray{
             QJsonObject{
                 {QStringLiteral("uninstall"),
                  QJsonArray{QJsonObject{
                      {wantsSudo(cask) ? QStringLiteral("pkgutil") : QStringLiteral("quit"), identifier}}}}},
             QJsonObject{{QStringLiteral("app"), QJsonArray{cask.app}},
                         {QStringLiteral("target"), brew.prefix.appPath(cask)}},
             QJsonObject{{QStringLiteral("preflight"), QJsonValue::Null}},
             QJsonObject{{QStringLiteral("zap"),
                          QJsonArray{QJsonObject{
                              {QStringLiteral("trash"),
                               QJsonArray{QStringLiteral("~/Library/Preferences/%1.plist").arg(identifier),
                                          QStringLiteral("~/Library/Caches/") + identifier}}}}}}}},
        {QStringLiteral("caveats"), orNull(cask.caveats)},
        {QStringLiteral("caveats_rosetta"), cask.rosetta ? QJsonValue(true) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("depends_on"), QJsonObject()},
        {QStringLiteral("auto_updates"), cask.autoUpdates ? QJsonValue(true) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("deprecated"), false},
        {QStringLiteral("disabled"), false},
        {QStringLiteral("ruby_source_path"), QStringLiteral("Casks/%1.rb").arg(cask.token)}};
}

} // namespace sample
