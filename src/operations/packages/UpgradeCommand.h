#pragma once

#include "operations/packages/PackageCommand.h"

namespace larkspur {

class Preferences;

class UpgradeCommand final : public PackageCommand {
  public:
    /// Whether casks are upgraded by a reinstallation is read when it matters. Outlived by the preferences.
    explicit UpgradeCommand(const Preferences &preferences)
        : m_preferences(preferences) {}

    BrewArguments arguments(const PackageTarget &package) const override;
    BrewSession::Style style() const override { return BrewSession::Style::Terminal; }
    QString verb() const override { return QStringLiteral("Upgrading"); }
    QString purpose() const override { return QStringLiteral("updating"); }
    Deed deed() const override { return Deed::Upgraded; }
    bool mayLoseLinks() const override { return true; }
    /// A reinstallation is looked after by what runs it.
    bool replacesApplication(const PackageTarget &package) const override {
        return package.isCask && !reinstallsCasks();
    }
    bool avoidsExtendedAttributes(const PackageTarget &package) const override {
        return package.isCask && reinstallsCasks();
    }
    StateFinding finding(const PackageTarget &package, const PackageState &state) const override {
        return unlessUpgraded(package, state);
    }
    std::optional<ForcedRetry> retry(const PackageTarget &package, const QStringList &output,
                                     const QStringList &places) const override;
    QString cancelledLine(const PackageTarget &package, bool mayHaveChanged) const override;

    /// For machines on which Homebrew cannot copy extended attributes.
    bool reinstallsCasks() const;

  private:
    const Preferences &m_preferences;
};

} // namespace larkspur
