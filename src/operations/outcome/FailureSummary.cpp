#include "operations/outcome/FailureSummary.h"

#include "core/brew/BrewService.h"
#include "core/errors/AppError.h"
#include "core/output/PhraseSet.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

namespace {

QStringList namesOf(const OperationRequest &request) {
    QStringList names;
    for (const PackageTarget &package : request.packages)
        names.append(package.name);
    return names;
}

/// The packages that Homebrew says it has reverted; those of the request where it names none.
QStringList revertedNames(const OperationRequest &request, const QStringList &output) {
    static const QRegularExpression revert(QStringLiteral("Reverting upgrade for (?:Cask |Formula )?(\\S+)"));
    QStringList names;
    for (const QString &line : output)
        if (const auto match = revert.match(line); match.hasMatch())
            names.append(match.captured(1));
    names.removeDuplicates();
    return names.isEmpty() ? namesOf(request) : names;
}

FailureSummary rolledBack(const OperationRequest &request, const QStringList &output) {
    const QStringList names = revertedNames(request, output);
    const QString verb = names.size() > 1 ? QStringLiteral(" were") : QStringLiteral(" was");
    const QString subject = names.isEmpty() ? QStringLiteral("a package") : names.join(QStringLiteral(", "));
    return {QStringLiteral("Upgrade rolled back: ") + subject + verb +
                QStringLiteral(" restored to the previous version."),
            QStringLiteral("Homebrew hit an error mid-upgrade, so no changes were kept.")};
}

FailureSummary needsAdministrator(const OperationRequest &request) {
    if (request.kind == OperationKind::Upgrade && !request.packages.isEmpty())
        return {QStringLiteral("This operation requires administrator privileges to upgrade ") +
                    namesOf(request).join(QStringLiteral(", ")) + QLatin1Char('.'),
                {}};
    return {QStringLiteral("This operation requires administrator privileges."), {}};
}

FailureSummary needsLicence() {
    return {
        QStringLiteral(
            "This package asks you to accept its license terms, which can't be answered here. To accept "
            "them, copy the command, run it in Terminal, then quit and reopen Larkspur (⌘Q) and try again."),
        {},
        QStringLiteral("echo 'export HOMEBREW_ACCEPT_EULA=Y' >> ~/.zshrc")};
}

} // namespace

bool isAppManagementBlock(const QString &output) {
    return output.contains(QLatin1String("apply2files")) &&
           (output.contains(QLatin1String("Permission denied")) ||
            output.contains(QLatin1String("Operation not permitted")));
}

namespace {

/// A rollback says itself what was in its way.
FailureSummary notRolledBack(const QStringList &output) {
    const QString start = QStringLiteral("==> ");
    QStringList lines;
    for (const QString &line : output)
        if (line.startsWith(QLatin1String("==> Could not roll back ")) ||
            line.startsWith(QLatin1String("==> Put ")) || line.startsWith(QLatin1String("==> Restore in")))
            lines.append(line.mid(start.size()) + QLatin1Char('.'));
    return {lines.join(QLatin1Char('\n')), {}};
}

/// A build that failed names no error: its last lines and its log do.
std::optional<FailureSummary> notBuilt(const OperationRequest &request, const QStringList &output) {
    static const QRegularExpression header(QStringLiteral("^Last \\d+ lines from (.+):$"));
    const auto start =
        std::ranges::find_if(output, [](const QString &line) { return header.match(line).hasMatch(); });
    if (start == output.end())
        return std::nullopt;
    QStringList last;
    for (auto line = start + 1; line != output.end(); ++line) {
        if (line->startsWith(QLatin1String("READ THIS")) || line->startsWith(QLatin1String("If reporting")) ||
            line->startsWith(QLatin1String("==> ")))
            break;
        last.append(*line);
    }
    const QString name =
        request.packages.size() == 1 ? request.packages.first().name : QStringLiteral("A formula");
    return FailureSummary{
        QStringLiteral("%1 could not be built:\n%2").arg(name, last.join(QLatin1Char('\n')).trimmed()),
        QStringLiteral("The log of the build is %1").arg(header.match(*start).captured(1))};
}

} // namespace

FailureSummary summarizeFailure(const OperationRequest &request, const OperationReport &report,
                                const QStringList &output) {
    const bool saysItself = request.kind == OperationKind::RollBack || request.kind == OperationKind::Restore;
    if (saysItself || !report.hasFailed())
        return summarizeFailure(request, output);
    FailureSummary all;
    const bool isOne = report.count(PackageEnd::Failed) == 1;
    for (const PackageResult &result : report.packages) {
        if (result.end != PackageEnd::Failed)
            continue;
        OperationRequest own = request;
        if (!result.package.name.isEmpty())
            own.packages = {result.package};
        const FailureSummary one = summarizeFailure(own, result.lines.isEmpty() ? output : result.lines);
        if (!all.text.isEmpty())
            all.text += QLatin1Char('\n');
        all.text += isOne ? one.text : QStringLiteral("%1: %2").arg(result.package.name, one.text);
        if (all.suggestion.isEmpty())
            all.suggestion = one.suggestion;
        if (all.commandToCopy.isEmpty())
            all.commandToCopy = one.commandToCopy;
    }
    return all;
}

FailureSummary summarizeFailure(const OperationRequest &request, const QStringList &output) {
    enum Phrase { Reverting, Refused, Password, Denied, Administrator, Licence, Eula };
    static const PhraseSet phrases{"reverting upgrade for",    "apply2files",
                                   "password is required",     "permission denied",
                                   "administrator privileges", "accept the license terms",
                                   "homebrew_accept_eula"};
    if (request.kind == OperationKind::RollBack || request.kind == OperationKind::Restore)
        if (FailureSummary summary = notRolledBack(output); !summary.text.isEmpty())
            return summary;
    PhraseSet::Found found = 0;
    for (const QString &line : output)
        found |= phrases.in(line);
    const auto has = [found](Phrase phrase) { return (found & PhraseSet::bit(phrase)) != 0; };
    if (has(Reverting))
        return rolledBack(request, output);
    if (has(Refused) && isAppManagementBlock(output.join(QLatin1Char('\n'))))
        return {QStringLiteral(
                    "macOS blocked Larkspur from modifying this app. Grant Larkspur \"App Management\" "
                    "permission in System Settings → Privacy & Security → App Management, then quit and "
                    "reopen Larkspur and try again."),
                {}};
    if (has(Password) || has(Denied) || has(Administrator))
        return needsAdministrator(request);
    if (has(Licence) || has(Eula))
        return needsLicence();
    if (const auto summary = notBuilt(request, output))
        return *summary;
    const AppError error{AppError::Kind::CommandFailed, failureText(output)};
    return {error.message(), error.recoverySuggestion()};
}

} // namespace larkspur
