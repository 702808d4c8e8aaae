#include "operations/outcome/FailureSummary.h"

#include "core/brew/BrewService.h"
#include "core/errors/AppError.h"
#include "core/output/PhraseSet.h"

namespace larkspur {

namespace {

QString namesOf(const OperationRequest &request) {
    QStringList names;
    for (const PackageTarget &package : request.packages)
        names.append(package.name);
    return names.join(QStringLiteral(", "));
}

FailureSummary rolledBack(const OperationRequest &request) {
    const bool isOne = request.packages.size() == 1;
    const QString names = request.packages.isEmpty() ? QStringLiteral("a package") : namesOf(request);
    const QString verb =
        isOne || request.packages.isEmpty() ? QStringLiteral(" was") : QStringLiteral(" were");
    return {QStringLiteral("Upgrade rolled back: ") + names + verb +
                QStringLiteral(" restored to the previous version."),
            QStringLiteral("Homebrew hit an error mid-upgrade, so no changes were kept.")};
}

FailureSummary needsAdministrator(const OperationRequest &request) {
    if (request.kind == OperationKind::Upgrade && !request.packages.isEmpty())
        return {QStringLiteral("This operation requires administrator privileges to upgrade ") +
                    namesOf(request) + QLatin1Char('.'),
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

} // namespace

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
        return rolledBack(request);
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
    const AppError error{AppError::Kind::CommandFailed, failureText(output)};
    return {error.message(), error.recoverySuggestion()};
}

} // namespace larkspur
