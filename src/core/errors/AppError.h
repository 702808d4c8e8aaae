#pragma once

#include "core/errors/BrewError.h"

#include <QString>

namespace larkspur {

/// A failure as a person sees it: a message and a suggestion of what to do.
struct AppError {
    enum class Kind {
        CommandFailed,
        NetworkError,
        PackageNotFound,
        PermissionDenied,
        Timeout,
        Unknown,
        BrewNotInstalled,
    };

    Kind kind = Kind::Unknown;
    QString payload;

    /// The same failure for the interface. Kinds without a counterpart become a failed command with their own
    /// text.
    static AppError from(const BrewError &error);

    QString message() const;
    QString recoverySuggestion() const;

    /// Tells repeated errors apart; empty for kinds that are never merged.
    QString stableIdentifier() const;

    bool operator==(const AppError &) const = default;
};

/// True when Homebrew's text says that the Xcode licence must be accepted first.
bool mentionsXcodeLicense(const QString &text);

} // namespace larkspur
