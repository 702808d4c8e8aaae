#include "Brew.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace sample {

namespace {

void printJson(const Brew &brew, const QJsonDocument &document) {
    brew.screen.line(QString::fromUtf8(document.toJson()).trimmed());
}

int unknownFormula(const Brew &brew, const QString &name) {
    brew.screen.error(QStringLiteral("No available formula with the name \"%1\".").arg(name));
    return 1;
}

/// The formulae and casks that a command line means; false if one name is unknown.
bool select(const Brew &brew, const Arguments &arguments, QList<const Formula *> &formulae,
            QList<const Cask *> &casks) {
    const bool wantsFormulae = !arguments.has("--cask");
    const bool wantsCasks = !arguments.has("--formula");
    if (arguments.has("--installed")) {
        for (const Formula &formula : brew.catalogue.formulae)
            if (wantsFormulae && brew.isInstalled(formula) && brew.isTrusted(formula.tap))
                formulae.append(&formula);
        for (const Cask &cask : brew.catalogue.casks)
            if (wantsCasks && brew.isInstalled(cask))
                casks.append(&cask);
        return true;
    }
    for (const QString &name : arguments.names) {
        const Formula *formula = wantsFormulae ? brew.catalogue.formula(name) : nullptr;
        const Cask *cask = wantsCasks && !formula ? brew.catalogue.cask(name) : nullptr;
        if (formula && !brew.isTrusted(formula->tap)) {
            brew.screen.error(QStringLiteral("Refusing to load formula %1 from untrusted tap %2.\n"
                                             "Run `brew trust --formula %1` or `brew trust %2` to trust it.")
                                  .arg(formula->fullName(), formula->tap));
            return false;
        }
        if (formula)
            formulae.append(formula);
        else if (cask)
            casks.append(cask);
        else if (wantsFormulae)
            return unknownFormula(brew, name) == 0;
        else {
            brew.screen.error(
                QStringLiteral("Cask '%1' is unavailable: No Cask with this name exists.").arg(name));
            return false;
        }
    }
    return true;
}

QJsonObject outdatedJson(const QString &name, const QStringList &installed, const QString &current,
                         bool pinned) {
    return {{QStringLiteral("name"), name},
            {QStringLiteral("installed_versions"), QJsonArray::fromStringList(installed)},
            {QStringLiteral("current_version"), current},
            {QStringLiteral("pinned"), pinned},
            {QStringLiteral("pinned_version"), pinned ? QJsonValue(installed.last()) : QJsonValue()}};
}

bool isNeeded(const Brew &brew, const Formula &formula) {
    return std::ranges::any_of(brew.catalogue.formulae, [&](const Formula &other) {
        return brew.isInstalled(other) && other.dependencies.contains(formula.fullName());
    });
}

void printTree(const Brew &brew, const Formula &formula, const QString &indent) {
    for (qsizetype i = 0; i < formula.dependencies.size(); ++i) {
        const bool isLast = i + 1 == formula.dependencies.size();
        brew.screen.line(indent + (isLast ? QStringLiteral("└── ") : QStringLiteral("├── ")) +
                         formula.dependencies[i]);
        if (const Formula *child = brew.catalogue.formula(formula.dependencies[i]))
            printTree(brew, *child, indent + (isLast ? QStringLiteral("    ") : QStringLiteral("│   ")));
    }
}

QJsonObject tapJson(const Brew &brew, const Tap &tap) {
    QJsonArray formulae;
    QJsonArray casks;
    for (const Formula &formula : brew.catalogue.formulae)
        if (formula.tap == tap.name)
            formulae.append(formula.fullName());
    for (const Cask &cask : brew.catalogue.casks)
        if (cask.tap == tap.name)
            casks.append(cask.fullToken());
    const QString user = tap.name.section(QLatin1Char('/'), 0, 0);
    const QString repo = tap.name.section(QLatin1Char('/'), 1);
    return {{QStringLiteral("name"), tap.name},
            {QStringLiteral("user"), user},
            {QStringLiteral("repo"), repo},
            {QStringLiteral("repository"), repo},
            {QStringLiteral("path"),
             QStringLiteral("%1/Library/Taps/%2/homebrew-%3").arg(brew.prefix.path(), user, repo)},
            {QStringLiteral("installed"), true},
            {QStringLiteral("official"), tap.official},
            {QStringLiteral("trusted"), tap.official || tap.trusted},
            {QStringLiteral("formula_names"), formulae},
            {QStringLiteral("cask_tokens"), casks},
            {QStringLiteral("command_files"), QJsonArray()},
            {QStringLiteral("remote"), tap.remote},
            {QStringLiteral("custom_remote"), false},
            {QStringLiteral("private"), false}};
}

} // namespace

int info(Brew &brew, const Arguments &arguments) {
    QList<const Formula *> formulae;
    QList<const Cask *> casks;
    if (!select(brew, arguments, formulae, casks))
        return 1;
    brew.screen.pause(arguments.has("--installed") ? 900 : 300);
    QJsonArray formulaArray;
    QJsonArray caskArray;
    for (const Formula *formula : formulae)
        formulaArray.append(formulaJson(brew, *formula));
    for (const Cask *cask : casks)
        caskArray.append(caskJson(brew, *cask));
    printJson(brew, QJsonDocument(QJsonObject{{QStringLiteral("formulae"), formulaArray},
                                              {QStringLiteral("casks"), caskArray}}));
    return 0;
}

int outdated(Brew &brew, const Arguments &) {
    brew.screen.pause(700);
    QJsonArray formulae;
    QJsonArray casks;
    for (const Formula &formula : brew.catalogue.formulae)
        if (brew.isOutdated(formula) && brew.isTrusted(formula.tap))
            formulae.append(outdatedJson(formula.fullName(), brew.prefix.versions(formula), formula.version,
                                         brew.prefix.isPinned(formula.name, false)));
    for (const Cask &cask : brew.catalogue.casks)
        if (brew.isOutdated(cask))
            casks.append(outdatedJson(cask.token, {brew.prefix.installedVersion(cask)}, cask.version,
                                      brew.prefix.isPinned(cask.token, true)));
    printJson(brew, QJsonDocument(QJsonObject{{QStringLiteral("formulae"), formulae},
                                              {QStringLiteral("casks"), casks}}));
    return 0;
}

int leaves(Brew &brew, const Arguments &) {
    brew.screen.pause(300);
    for (const Formula &formula : brew.catalogue.formulae) {
        const QStringList versions = brew.prefix.versions(formula);
        if (versions.isEmpty() || !brew.isTrusted(formula.tap) || isNeeded(brew, formula))
            continue;
        if (brew.prefix.receipt(formula, versions.last())
                .value(QLatin1String("installed_on_request"))
                .toBool())
            brew.screen.line(formula.fullName());
    }
    return 0;
}

int list(Brew &brew, const Arguments &arguments) {
    const bool isFull = arguments.has("--full-name");
    const bool isPinned = arguments.has("--pinned");
    for (const Formula &formula : brew.catalogue.formulae)
        if (!arguments.has("--cask") && brew.isInstalled(formula) &&
            (!isPinned || brew.prefix.isPinned(formula.name, false)))
            brew.screen.line(isFull ? formula.fullName() : formula.name);
    for (const Cask &cask : brew.catalogue.casks)
        if (!arguments.has("--formula") && brew.isInstalled(cask) &&
            (!isPinned || brew.prefix.isPinned(cask.token, true)))
            brew.screen.line(cask.token);
    return 0;
}

int search(Brew &brew, const Arguments &arguments) {
    const QString text = arguments.names.join(QLatin1Char(' '));
    brew.screen.pause(400);
    QStringList formulae;
    QStringList casks;
    for (const Formula &formula : brew.catalogue.formulae)
        if (!arguments.has("--cask") && formula.name.contains(text, Qt::CaseInsensitive))
            formulae.append(formula.fullName());
    for (const Cask &cask : brew.catalogue.casks)
        if (!arguments.has("--formula") && cask.token.contains(text, Qt::CaseInsensitive))
            casks.append(cask.token);
    if (formulae.isEmpty() && casks.isEmpty()) {
        brew.screen.error(QStringLiteral("No formulae or casks found for \"%1\".").arg(text));
        return 1;
    }
    const QString gap = formulae.isEmpty() || casks.isEmpty() ? QString() : QStringLiteral("\n\n");
    brew.screen.line(formulae.join(QLatin1Char('\n')) + gap + casks.join(QLatin1Char('\n')));
    return 0;
}

int deps(Brew &brew, const Arguments &arguments) {
    for (const QString &name : arguments.names) {
        const Formula *formula = brew.catalogue.formula(name);
        if (!formula)
            return unknownFormula(brew, name);
        if (arguments.has("--tree")) {
            brew.screen.line(formula->fullName());
            printTree(brew, *formula, {});
            brew.screen.line({});
        } else {
            for (const QString &dependency : formula->dependencies)
                brew.screen.line(dependency);
        }
    }
    return 0;
}

int uses(Brew &brew, const Arguments &arguments) {
    for (const QString &name : arguments.names) {
        const Formula *formula = brew.catalogue.formula(name);
        if (!formula)
            return unknownFormula(brew, name);
        for (const Formula &other : brew.catalogue.formulae)
            if (brew.isInstalled(other) && other.dependencies.contains(formula->fullName()))
                brew.screen.line(other.fullName());
    }
    return 0;
}

namespace {

int restartService(Brew &brew, const QString &name) {
    const Formula *formula = brew.catalogue.formula(name);
    if (!formula || formula->service.isEmpty())
        return unknownFormula(brew, name);
    QJsonObject state = brew.prefix.state();
    QJsonObject services = state.value(QLatin1String("services")).toObject();
    brew.screen.line(QStringLiteral("Stopping `%1`... (might take a while)").arg(name));
    brew.screen.pause(500);
    services.insert(name, QStringLiteral("started"));
    state.insert(QStringLiteral("services"), services);
    brew.prefix.setState(state);
    brew.screen.header(QStringLiteral("Successfully started `%1` (label: homebrew.mxcl.%1)").arg(name));
    return 0;
}

} // namespace

int services(Brew &brew, const Arguments &arguments) {
    if (arguments.names.value(0) == QLatin1String("restart"))
        return restartService(brew, arguments.names.value(1));
    brew.screen.pause(200);
    const QJsonObject states = brew.prefix.state().value(QLatin1String("services")).toObject();
    QJsonArray array;
    for (const Formula &formula : brew.catalogue.formulae) {
        if (formula.service.isEmpty() || !brew.isInstalled(formula))
            continue;
        const QString status = states.value(formula.name).toString(QStringLiteral("none"));
        const bool isLoaded = status != QLatin1String("none");
        QJsonValue exitCode;
        if (isLoaded)
            exitCode = status == QLatin1String("error") ? 78 : 0;
        array.append(QJsonObject{
            {QStringLiteral("name"), formula.name},
            {QStringLiteral("status"), status},
            {QStringLiteral("user"),
             isLoaded ? QJsonValue(qEnvironmentVariable("USER", QStringLiteral("sample"))) : QJsonValue()},
            {QStringLiteral("file"),
             QStringLiteral("%1/opt/%2/homebrew.%2.service").arg(brew.prefix.path(), formula.name)},
            {QStringLiteral("exit_code"), exitCode}});
    }
    printJson(brew, QJsonDocument(array));
    return 0;
}

int tap(Brew &brew, const Arguments &arguments) {
    QJsonObject state = brew.prefix.state();
    QJsonArray added = state.value(QLatin1String("taps")).toArray();
    if (!arguments.names.isEmpty()) {
        brew.screen.note(QStringLiteral("==> Tapping ") + arguments.names.first());
        added.append(arguments.names.first());
        state.insert(QStringLiteral("taps"), added);
        brew.prefix.setState(state);
        return 0;
    }
    for (const Tap &tap : brew.catalogue.taps)
        brew.screen.line(tap.name);
    for (const QJsonValue &name : added)
        brew.screen.line(name.toString());
    return 0;
}

int tapInfo(Brew &brew, const Arguments &arguments) {
    QJsonArray array;
    for (const Tap &tap : brew.catalogue.taps)
        if (arguments.has("--installed") || arguments.names.contains(tap.name))
            array.append(tapJson(brew, tap));
    printJson(brew, QJsonDocument(array));
    return 0;
}

int trust(Brew &brew, const Arguments &) {
    QJsonArray taps;
    for (const Tap &tap : brew.catalogue.taps)
        if (tap.trusted && !tap.official)
            taps.append(tap.name);
    printJson(brew, QJsonDocument(QJsonObject{{QStringLiteral("taps"), taps},
                                              {QStringLiteral("formulae"), QJsonArray()},
                                              {QStringLiteral("casks"), QJsonArray()},
                                              {QStringLiteral("commands"), QJsonArray()}}));
    return 0;
}

int update(Brew &brew, const Arguments &) {
    brew.screen.note(QStringLiteral("==> Updating Homebrew..."));
    brew.screen.pause(1500);
    brew.screen.line(QStringLiteral("Already up-to-date."));
    return 0;
}

} // namespace sample
