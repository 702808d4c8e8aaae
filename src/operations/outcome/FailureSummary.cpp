#include "operations/outcome/FailureSummary.h"

#include "core/brew/BrewService.h"
#include "core/errors/AppError.h"
#include "core/output/PhraseSet.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

namespace {

/// The packages that Homebrew says it has reverted; the one concerned where it names none.
QStringList revertedNames(const PackageResult &result) {
    static const QRegularExpression revert(QStringLiteral("Reverting upgrade for (?:Cask |Formula )?(\\S+)"));
    QStringList names;
    for (const QString &line : result.lines)
        if (const auto match = revert.match(line); match.hasMatch())
            names.append(match.captured(1));
    names.removeDuplicates();
    if (names.isEmpty() && !result.package.name.isEmpty())
        names.append(result.package.name);
    return names;
}

FailureSummary rolledBack(const PackageResult &result) {
    const QStringList names = revertedNames(result);
    const QString verb = names.size() > 1 ? QStringLiteral(" were") : QStringLiteral(" was");
    const QString subject = names.isEmpty() ? QStringLiteral("a package") : names.join(QStringLiteral(", "));
    return {QStringLiteral("Upgrade rolled back: ") + subject + verb +
                QStringLiteral(" restored to the previous version."),
            QStringLiteral("Homebrew hit an error mid-upgrade, so no changes were kept.")};
}

FailureSummary needsAdministrator(const PackageResult &result) {
    if (result.deed == Deed::Upgraded && !result.package.name.isEmpty())
        return {QStringLiteral("This operation requires administrator privileges to upgrade ") +
                result.package.name + QLatin1Char('.')};
    return {QStringLiteral("This operation requires administrator privileges.")};
}

FailureSummary notAuthorized() {
    return {QStringLiteral("The administrator password that it needs was not given.")};
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

/// A build that failed names no error: its last lines and its log do.
std::optional<FailureSummary> notBuilt(const PackageResult &result) {
    const QStringList &output = result.lines;
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
    const QString name = result.package.name.isEmpty() ? QStringLiteral("A formula") : result.package.name;
    return FailureSummary{
        QStringLiteral("%1 could not be built:\n%2").arg(name, last.join(QLatin1Char('\n')).trimmed()),
        QStringLiteral("The log of the build is %1").arg(header.match(*start).captured(1))};
}

} // namespace

FailureSummary summarizeFailure(const OperationReport &report, const QStringList &output) {
    QList<PackageResult> failed;
    std::ranges::copy_if(report.packages, std::back_inserter(failed), [](const PackageResult &result) {
        return result.end == PackageEnd::Failed || result.end == PackageEnd::Cancelled;
    });
    if (failed.isEmpty())
        failed.append({.package = {}, .lines = output}); // what failed concerns no single package
    FailureSummary all;
    QList<std::pair<QString, QStringList>> reasons; // and whom each concerns, in the order of appearance
    for (PackageResult &result : failed) {
        if (result.lines.isEmpty())
            result.lines = output;
        const FailureSummary one =
            result.end == PackageEnd::Cancelled ? notAuthorized() : summarizeFailure(result);
        auto known = std::ranges::find(reasons, one.text, &std::pair<QString, QStringList>::first);
        if (known == reasons.end())
            known = reasons.insert(reasons.end(), {one.text, {}});
        if (!result.package.name.isEmpty())
            known->second.append(result.package.name);
        if (all.suggestion.isEmpty())
            all.suggestion = one.suggestion;
        if (all.commandToCopy.isEmpty())
            all.commandToCopy = one.commandToCopy;
    }
    QStringList texts;
    for (const auto &[text, names] : std::as_const(reasons))
        texts.append(failed.size() == 1 || names.isEmpty()
                         ? text
                         : QStringLiteral("%1: %2").arg(names.join(QStringLiteral(", ")), text));
    all.text = texts.join(QLatin1Char('\n'));
    return all;
}

FailureSummary summarizeRollback(const OperationReport &report, const QStringList &output) {
    const QString start = QStringLiteral("==> ");
    QStringList lines;
    for (const QString &line : output)
        if (line.startsWith(QLatin1String("==> Could not roll back ")) ||
            line.startsWith(QLatin1String("==> Put ")) || line.startsWith(QLatin1String("==> Restore in")))
            lines.append(line.mid(start.size()) + QLatin1Char('.'));
    return lines.isEmpty() ? summarizeFailure(report, output) : FailureSummary{lines.join(QLatin1Char('\n'))};
}

FailureSummary summarizeFailure(const PackageResult &result) {
    enum Phrase { Reverting, Refused, Password, Denied, Administrator, Licence, Eula };
    static const PhraseSet phrases{"reverting upgrade for",    "apply2files",
                                   "password is required",     "permission denied",
                                   "administrator privileges", "accept the license terms",
                                   "homebrew_accept_eula"};
    PhraseSet::Found found = 0;
    for (const QString &line : result.lines)
        found |= phrases.in(line);
    const auto has = [found](Phrase phrase) { return (found & PhraseSet::bit(phrase)) != 0; };
    if (has(Reverting))
        return rolledBack(result);
    if (has(Refused) && isAppManagementBlock(result.lines.join(QLatin1Char('\n'))))
        return {QStringLiteral(
            "macOS blocked Larkspur from modifying this app. Grant Larkspur \"App Management\" permission in "
            "System Settings → Privacy & Security → App Management, then quit and reopen Larkspur and try "
            "again.")};
    if (has(Password) || has(Denied) || has(Administrator))
        return needsAdministrator(result);
    if (has(Licence) || has(Eula))
        return needsLicence();
    if (const auto summary = notBuilt(result))
        return *summary;
    const AppError error{AppError::Kind::CommandFailed, failureText(result.lines)};
    return {error.message(), error.recoverySuggestion()};
}

} // namespace larkspur
