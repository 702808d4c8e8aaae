#pragma once

#include "core/brew/BrewArguments.h"
#include "core/brew/BrewService.h"
#include "operations/installed/StateCheck.h"
#include "operations/packages/ForcedRetry.h"
#include "operations/run/OperationReport.h"

namespace larkspur {

/// What is run for one package, how its end is checked, and what is said about it. One class per kind of
/// work.
class PackageCommand {
  public:
    virtual ~PackageCommand() = default;

    /// The words after "brew"; empty if the package's name is none.
    virtual BrewArguments arguments(const PackageTarget &package) const = 0;
    virtual EnvironmentMap environment() const { return {}; }
    /// Commands that download run on a terminal, so that today's Homebrew shows how far it is.
    virtual BrewSession::Style style() const { return BrewSession::Style::Plain; }

    virtual QString verb() const = 0; ///< "Upgrading"
    /// What the password is to finish: "updating".
    virtual QString purpose() const { return verb().toLower(); }
    virtual Deed deed() const { return Deed::None; }

    /// Whether Homebrew, killed in the middle, leaves formulae without their links. Whoever removes a package
    /// wants them gone.
    virtual bool mayLoseLinks() const { return false; }
    /// Whether Homebrew takes a cask's application away before it installs the new one, and only for a while.
    virtual bool replacesApplication(const PackageTarget &) const { return false; }
    /// Whether the machine's Homebrew cannot copy extended attributes, which this would need.
    virtual bool avoidsExtendedAttributes(const PackageTarget &) const { return false; }

    /// What is not as a success should have left it.
    virtual StateFinding finding(const PackageTarget &, const PackageState &) const { return {}; }
    /// A second try that gets over what stood in the way; `places`: of the cask's applications.
    virtual std::optional<ForcedRetry> retry(const PackageTarget &, const QStringList & /*output*/,
                                             const QStringList & /*places*/) const {
        return std::nullopt;
    }

    virtual QString passwordReason(const PackageTarget &package) const;
    /// Whether it is no surprise that Homebrew wants the password while it is at the package of this name.
    /// Formulae are built and removed with the person's own rights, and only what is known to be no formula
    /// may need others.
    virtual bool expectsPassword(const PackageTarget &package, const QString &name) const {
        return package.isCask && shortName(package.name) == shortName(name);
    }
    /// When the person does not give it. `mayHaveChanged`: what has run so far can have changed something.
    virtual QString cancelledLine(const PackageTarget &package, bool mayHaveChanged) const;
};

/// "COMMAND NAME" and "COMMAND --cask NAME".
BrewArguments plainArguments(const BrewWord &command, const PackageTarget &package);

} // namespace larkspur
