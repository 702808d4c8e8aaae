#include "core/errors/AppError.h"

namespace larkspur {

namespace {

/// What a failed command's text turned out to mean.
enum class Situation { XcodeLicense, PackageIndex, AnotherOperation, Other };

Situation classify(const QString &text) {
    if (mentionsXcodeLicense(text))
        return Situation::XcodeLicense;
    if (text.contains(QLatin1String("Cannot download")) &&
        text.contains(QLatin1String("formulae.brew.sh/api")))
        return Situation::PackageIndex;
    if (text.contains(QLatin1String("Another active Homebrew")) ||
        text.contains(QLatin1String("Please wait")))
        return Situation::AnotherOperation;
    return Situation::Other;
}

QString failedCommandMessage(const QString &text) {
    switch (classify(text)) {
    case Situation::XcodeLicense:
        return QStringLiteral("Xcode License Agreement Required");
    case Situation::PackageIndex:
        return QStringLiteral("Unable to load Homebrew package index");
    case Situation::AnotherOperation:
        return QStringLiteral("Another Homebrew operation is in progress");
    case Situation::Other:
        break;
    }
    return text;
}

QString failedCommandSuggestion(const QString &text) {
    switch (classify(text)) {
    case Situation::XcodeLicense:
        return QStringLiteral(
            "You need to accept the Xcode license agreement before Homebrew can function.\n\n"
            "Open Terminal and run:\nsudo xcodebuild -license accept\n\n"
            "Then click Retry below.");
    case Situation::PackageIndex:
        return QStringLiteral("Homebrew's package index may be temporarily unavailable or corrupted. "
                              "Run 'brew update' in Terminal to refresh it.");
    case Situation::AnotherOperation:
        return QStringLiteral(
            "Another Homebrew process is running. Wait for it to complete or check Activity "
            "Monitor for stuck processes.");
    case Situation::Other:
        break;
    }
    if (text.contains(QLatin1String("already installed")))
        return QStringLiteral("This app is already installed. Use 'Reinstall' if you want to replace it.");
    return QStringLiteral("Try running 'brew doctor' in Terminal to diagnose issues");
}

} // namespace

bool mentionsXcodeLicense(const QString &text) {
    return text.contains(QLatin1String("xcode"), Qt::CaseInsensitive) &&
           (text.contains(QLatin1String("license"), Qt::CaseInsensitive) ||
            text.contains(QLatin1String("xcodebuild"), Qt::CaseInsensitive));
}

AppError AppError::from(const BrewError &error) {
    switch (error.kind) {
    case BrewError::Kind::PackageNotFound:
        return {Kind::PackageNotFound, error.text};
    case BrewError::Kind::BrewNotInstalled:
        return {Kind::BrewNotInstalled, {}};
    case BrewError::Kind::Timeout:
        return {Kind::Timeout, error.text};
    case BrewError::Kind::CommandFailed:
    case BrewError::Kind::ServiceControlFailed:
    case BrewError::Kind::InvalidOutput:
    case BrewError::Kind::AppManagementRequired:
    case BrewError::Kind::Stopped:
        break;
    }
    return {Kind::CommandFailed, error.description()};
}

QString AppError::message() const {
    switch (kind) {
    case Kind::CommandFailed:
        return failedCommandMessage(payload);
    case Kind::NetworkError:
        return QStringLiteral("Network error: ") + payload;
    case Kind::PackageNotFound:
        return QStringLiteral("Package '") + payload + QStringLiteral("' not found");
    case Kind::PermissionDenied:
        return QStringLiteral("Permission denied: ") + payload;
    case Kind::Timeout:
        return QStringLiteral("Command timed out: ") + payload;
    case Kind::Unknown:
        return payload;
    case Kind::BrewNotInstalled:
        return QStringLiteral("Homebrew is not installed");
    }
    return payload;
}

QString AppError::recoverySuggestion() const {
    switch (kind) {
    case Kind::CommandFailed:
        return failedCommandSuggestion(payload);
    case Kind::NetworkError:
        return QStringLiteral("Check your internet connection and try again");
    case Kind::PackageNotFound:
        return QStringLiteral("Check the package name or search for alternatives");
    case Kind::PermissionDenied:
        return QStringLiteral("Check file permissions or run 'brew doctor' for diagnostics");
    case Kind::Timeout:
        return QStringLiteral("The command took too long. Try again or check system resources");
    case Kind::Unknown:
        return QStringLiteral("Please try again or restart the app");
    case Kind::BrewNotInstalled:
        return QStringLiteral("Visit https://brew.sh to install Homebrew, then start Larkspur again");
    }
    return {};
}

QString AppError::stableIdentifier() const {
    switch (kind) {
    case Kind::PermissionDenied:
        return QStringLiteral("permission_denied_") + payload;
    case Kind::PackageNotFound:
        return QStringLiteral("package_not_found_") + payload;
    case Kind::BrewNotInstalled:
        return QStringLiteral("brew_not_installed");
    default:
        return {};
    }
}

} // namespace larkspur
