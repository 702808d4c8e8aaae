#include "inventory/queries/InventoryQueries.h"

#include "core/async/Worker.h"
#include "core/brew/BrewService.h"
#include "core/brew/PackageName.h"
#include "core/log/Logger.h"
#include "core/settings/Preferences.h"
#include "inventory/decoding/BrewInfoDecoder.h"
#include "inventory/decoding/Conversion.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace larkspur {

namespace {

constexpr char jsonV2[] = "--json=v2";

template <typename T>
using WithFailures = InventoryQueries::WithFailures<T>;

template <typename Record>
Decoded<WithFailures<QList<Record>>> withFailures(Decoded<LossyArray<Record>> list) {
    if (!list)
        return std::unexpected(list.error());
    return WithFailures<QList<Record>>{std::move(list->elements), std::move(list->failures)};
}

template <typename Record, typename Wire, typename Convert>
QList<Record> converted(const QList<Wire> &wire, Convert convert) {
    QList<Record> records;
    records.reserve(wire.size());
    for (const Wire &entry : wire)
        records.append(convert(entry));
    return records;
}

Decoded<WithFailures<QList<Formula>>> formulaeOf(const QByteArray &bytes) {
    auto response = decodeBrewInfo(bytes);
    if (!response)
        return std::unexpected(response.error());
    return WithFailures<QList<Formula>>{converted<Formula>(response->formulae.elements, toFormula),
                                        response->formulae.failures};
}

Decoded<WithFailures<QList<Cask>>> casksOf(const QByteArray &bytes) {
    auto response = decodeBrewInfo(bytes);
    if (!response)
        return std::unexpected(response.error());
    return WithFailures<QList<Cask>>{converted<Cask>(response->casks.elements, toCask),
                                     response->casks.failures};
}

Decoded<WithFailures<QList<OutdatedPackage>>> outdatedOf(const QByteArray &bytes) {
    auto response = decodeOutdated(bytes);
    if (!response)
        return std::unexpected(response.error());
    WithFailures<QList<OutdatedPackage>> packages;
    for (const OutdatedFormula &entry : response->formulae.elements)
        packages.value.append(toOutdatedPackage(entry));
    for (const OutdatedCask &entry : response->casks.elements)
        packages.value.append(toOutdatedPackage(entry));
    packages.failures = response->formulae.failures + response->casks.failures;
    return packages;
}

QSet<QString> shortNames(const QStringList &names) {
    QSet<QString> set;
    for (const QString &name : names)
        set.insert(shortName(name));
    return set;
}

bool reportsUnknownName(const QString &text) {
    return text.contains(QLatin1String("No available formula")) ||
           text.contains(QLatin1String("No formulae or casks")) ||
           text.contains(QLatin1String("No Cask with this name exists")) ||
           text.contains(QLatin1String("is unavailable"));
}

} // namespace

InventoryQueries::InventoryQueries(BrewService &brew, Preferences &preferences, Logger &logger)
    : m_brew(brew)
    , m_preferences(preferences)
    , m_logger(logger)
    , m_atOnce(std::max(2, QThread::idealThreadCount())) {}

Task<Result<ShellResult>> InventoryQueries::ask(BrewArguments arguments, StopToken stop, Cost cost) {
    std::optional<FairSemaphore::Permit> permit;
    if (cost == Cost::Ordinary) {
        permit = co_await m_atOnce.acquire(stop);
        if (!permit)
            co_return std::unexpected(BrewError::stopped());
    }
    auto result = co_await m_brew.execute(
        {.arguments = std::move(arguments), .suppressAutoUpdate = true, .stop = std::move(stop)});
    if (!result)
        co_return std::unexpected(result.error());
    if (const auto verdict = result->verdict(); !verdict)
        co_return std::unexpected(verdict.error());
    co_return std::move(*result);
}

Task<Result<QStringList>> InventoryQueries::askForNames(BrewArguments arguments, StopToken stop, Cost cost) {
    const auto answer = co_await ask(std::move(arguments), std::move(stop), cost);
    if (!answer)
        co_return std::unexpected(answer.error());
    QStringList names;
    for (const QString &line : answer->standardOutput().split(QLatin1Char('\n')))
        if (const QString name = line.trimmed(); !name.isEmpty())
            names.append(name);
    co_return names;
}

template <typename T>
Result<T> InventoryQueries::checked(Decoded<WithFailures<T>> decoded, const QString &logPrefix,
                                    int *unreadable) {
    if (!decoded) {
        m_logger.error(logPrefix + decoded.error().description());
        return std::unexpected(BrewError::invalidOutput(decoded.error().description()));
    }
    for (const QString &failure : decoded->failures)
        logLeftOut(failure);
    if (unreadable)
        *unreadable = static_cast<int>(decoded->failures.size());
    return std::move(decoded->value);
}

void InventoryQueries::logLeftOut(const QString &what) {
    m_logger.error(QStringLiteral("[Larkspur] An entry of Homebrew's answer was left out: ") + what);
}

Task<Result<QList<Formula>>> InventoryQueries::installedFormulae(StopToken stop) {
    auto answer = co_await ask({"info", "--installed", jsonV2}, std::move(stop));
    if (!answer)
        co_return std::unexpected(answer.error());
    auto decoded =
        co_await runInWorker([bytes = std::move(answer->outputBytes)] { return formulaeOf(bytes); });
    co_return checked(std::move(decoded),
                      QStringLiteral("[Larkspur] JSON decoding error in getInstalledFormulae: "),
                      &m_unreadableFormulae);
}

Task<Result<QList<Cask>>> InventoryQueries::installedCasks(StopToken stop) {
    auto answer = co_await ask({"info", "--installed", "--cask", jsonV2}, std::move(stop));
    if (!answer && answer.error().text.contains(QLatin1String("No casks to list")))
        co_return QList<Cask>();
    if (!answer)
        co_return std::unexpected(answer.error());
    auto decoded = co_await runInWorker([bytes = std::move(answer->outputBytes)] { return casksOf(bytes); });
    co_return checked(std::move(decoded),
                      QStringLiteral("[Larkspur] JSON decoding error in getInstalledCasks: "),
                      &m_unreadableCasks);
}

Task<Result<QList<OutdatedPackage>>> InventoryQueries::outdated(StopToken stop, SelfUpdating casks) {
    BrewArguments arguments{"outdated", jsonV2};
    if (casks == SelfUpdating::Included || m_preferences.boolean(keys::includeAutoUpdateCasks))
        arguments.append("--greedy-auto-updates");
    auto answer = co_await ask(std::move(arguments), std::move(stop));
    if (!answer)
        co_return std::unexpected(answer.error());
    auto decoded = outdatedOf(answer->outputBytes);
    co_return checked(std::move(decoded), QStringLiteral("brew outdated JSON decode failed: "));
}

Task<Result<QSet<QString>>> InventoryQueries::leaves(StopToken stop) {
    const auto names = co_await askForNames({"leaves"}, std::move(stop));
    co_return names ? Result<QSet<QString>>(shortNames(*names)) : std::unexpected(names.error());
}

Task<Result<QSet<QString>>> InventoryQueries::pinned(StopToken stop) {
    const auto names = co_await askForNames({"list", "--pinned"}, std::move(stop));
    co_return names ? Result<QSet<QString>>(shortNames(*names)) : std::unexpected(names.error());
}

Task<Result<QList<BrewServiceInfo>>> InventoryQueries::services(StopToken stop) {
    const auto answer = co_await ask({"services", "list", "--json"}, std::move(stop));
    if (!answer)
        co_return std::unexpected(answer.error());
    if (answer->outputBytes.trimmed().isEmpty())
        co_return QList<BrewServiceInfo>();
    auto decoded = decodeServices(answer->outputBytes);
    co_return checked(withFailures(std::move(decoded)),
                      QStringLiteral("[Larkspur] JSON decoding error in getServices: "));
}

Task<Result<BrewServiceInfo>> InventoryQueries::service(QString name, StopToken stop) {
    const auto list = co_await services(std::move(stop));
    if (!list)
        co_return std::unexpected(list.error());
    const auto found = std::ranges::find(*list, shortName(name), &BrewServiceInfo::name);
    if (found == list->end())
        co_return std::unexpected(BrewError::serviceControlFailed(QStringLiteral("Could not find service")));
    co_return BrewServiceInfo(*found);
}

Task<Result<QList<TapInfo>>> InventoryQueries::taps(StopToken stop) {
    const auto names = co_await askForNames({"tap"}, stop, Cost::Quick);
    if (!names)
        co_return std::unexpected(names.error());
    BrewArguments arguments{"tap-info", "--json"};
    bool isOneNamed = false;
    for (const QString &text : *names) {
        const auto name = TapName::parse(text);
        if (name)
            arguments.append(*name);
        else
            logLeftOut(QStringLiteral("\"%1\" is no name of a tap").arg(text));
        isOneNamed = isOneNamed || name;
    }
    if (!isOneNamed)
        co_return QList<TapInfo>();
    const auto answer = co_await ask(std::move(arguments), std::move(stop));
    if (!answer)
        co_return std::unexpected(answer.error());
    auto decoded = decodeTaps(answer->outputBytes);
    co_return checked(withFailures(std::move(decoded)),
                      QStringLiteral("[Larkspur] JSON decoding error in getTaps: "));
}

Task<Result<TrustState>> InventoryQueries::trust(StopToken stop) {
    const auto answer = co_await ask({"trust", "--json=v1"}, std::move(stop));
    if (!answer)
        co_return std::unexpected(answer.error());
    auto decoded = decodeTrust(answer->outputBytes);
    if (!decoded)
        co_return std::unexpected(BrewError::invalidOutput(decoded.error().description()));
    co_return std::move(*decoded);
}

Task<Result<QStringList>> InventoryQueries::installedFullNames(StopToken stop) {
    co_return co_await askForNames({"list", "--full-name"}, std::move(stop));
}

Task<Result<Formula>> InventoryQueries::formulaDetails(QString name, StopToken stop) {
    const auto word = PackageName::parse(name);
    if (!word)
        co_return std::unexpected(BrewError::packageNotFound(name));
    const auto answer = co_await ask({"info", "--formula", jsonV2, *word}, std::move(stop));
    if (!answer)
        co_return std::unexpected(reportsUnknownName(answer.error().text) ? BrewError::packageNotFound(name)
                                                                          : answer.error());
    const auto decoded = formulaeOf(answer->outputBytes);
    if (!decoded)
        co_return std::unexpected(BrewError::invalidOutput(decoded.error().description()));
    if (decoded->value.isEmpty())
        co_return std::unexpected(BrewError::packageNotFound(name));
    co_return decoded->value.first();
}

Task<Result<Cask>> InventoryQueries::caskDetails(QString token, StopToken stop) {
    const auto word = PackageName::parse(token);
    if (!word)
        co_return std::unexpected(BrewError::packageNotFound(token));
    const auto answer = co_await ask({"info", "--cask", jsonV2, *word}, std::move(stop));
    if (!answer)
        co_return std::unexpected(reportsUnknownName(answer.error().text) ? BrewError::packageNotFound(token)
                                                                          : answer.error());
    const auto decoded = casksOf(answer->outputBytes);
    if (!decoded)
        co_return std::unexpected(BrewError::invalidOutput(decoded.error().description()));
    if (decoded->value.isEmpty())
        co_return std::unexpected(BrewError::packageNotFound(token));
    co_return decoded->value.first();
}

Task<Result<SearchHits>> InventoryQueries::search(QString text, StopToken stop) {
    const auto wanted = SearchText::parse(text);
    if (!wanted)
        co_return SearchHits();
    auto formulaSearch = searchKind("--formula", *wanted, stop);
    auto caskSearch = searchKind("--cask", *wanted, stop);
    const auto formulae = co_await formulaSearch;
    const auto casks = co_await caskSearch;
    if (!formulae)
        co_return std::unexpected(formulae.error());
    if (!casks)
        co_return std::unexpected(casks.error());
    co_return SearchHits{*formulae, *casks};
}

Task<Result<QStringList>> InventoryQueries::searchKind(BrewWord kind, SearchText text, StopToken stop) {
    auto names = co_await askForNames({"search", kind, text}, std::move(stop));
    if (!names && names.error().kind == BrewError::Kind::CommandFailed &&
        names.error().text.contains(QLatin1String("No formulae or casks found")))
        co_return QStringList();
    if (names) // on some systems headers come with the names
        names->removeIf([](const QString &name) { return !PackageName::parse(name); });
    co_return names;
}

Task<Result<QStringList>> InventoryQueries::tapNames(StopToken stop) {
    co_return co_await askForNames({"tap"}, std::move(stop), Cost::Quick);
}

Task<Result<QStringList>> InventoryQueries::dependents(QString name, StopToken stop) {
    const auto word = PackageName::parse(name);
    if (!word)
        co_return std::unexpected(BrewError::packageNotFound(name));
    co_return co_await askForNames({"uses", "--installed", *word}, std::move(stop));
}

Task<Result<QString>> InventoryQueries::homebrewPrefix(StopToken stop) {
    const auto lines = co_await askForNames({"--prefix"}, std::move(stop), Cost::Quick);
    if (!lines)
        co_return std::unexpected(lines.error());
    // Whatever else is printed, a path beside it may be another's: an empty Homebrew would be seen there.
    const QString path = lines->size() == 1 ? lines->first() : QString();
    if (QDir::isRelativePath(path) || !QFileInfo(path).isDir())
        co_return std::unexpected(BrewError::invalidOutput(QStringLiteral("brew --prefix names no folder: ") +
                                                           lines->join(QStringLiteral(" / "))));
    co_return QString(path);
}

} // namespace larkspur
