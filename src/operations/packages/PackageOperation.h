#pragma once

#include "operations/casks/LostApplications.h"
#include "operations/packages/PackageCommand.h"
#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

/// Does one thing to each of some packages, one after the other: goes on after one that failed, puts right
/// what an interruption costs, and looks at the end whether what Homebrew reported is so.
class PackageOperation : public Operation {
  public:
    PackageOperation(const PackageServices &services, std::unique_ptr<PackageCommand> command,
                     QList<PackageTarget> packages);

    QString title() const override;
    QString terminalCommand() const override;
    std::optional<OperationReport> endWithoutLock(const OutputSinkPtr &output) const override;
    Task<OperationReport> perform(LockedWork work) override;

    const QList<PackageTarget> &packages() const { return m_packages; }

  protected:
    using Installed = std::expected<InstalledPackages, QString>;

    const PackageServices &services() const { return m_services; }
    const PackageCommand &command() const { return *m_command; }

    /// The casks whose applications an interruption can cost.
    virtual QStringList casksAtRisk(const InstalledPackages &installed) const;
    /// Before anything is changed. False if something has failed that does not keep the work from being done.
    virtual Task<Result<bool>> prepare(LockedWork work);
    /// In which order they are treated.
    virtual Task<QList<PackageTarget>> order(QList<PackageTarget> packages, StopToken stop) const;
    /// The work itself; adds to the report what became of each package. Fails if it was stopped or brew could
    /// not be run.
    virtual Task<Result<bool>> carryOut(LockedWork work, OperationReport *report);
    /// The same for one of them.
    virtual Task<Result<bool>> treat(LockedWork work, PackageTarget package, OperationReport *report);
    /// After everything; with what was and is installed, where that could be read.
    virtual Task<> conclude(LockedWork work, const InstalledPackages *before, const InstalledPackages *after,
                            OperationReport *report);
    /// A line of a batch about one package that has ended; empty: none.
    virtual QString batchLine(const PackageResult &) const { return {}; }

    /// Runs a command for one package, looks whether what Homebrew reports is so, and adds its end to the
    /// report, whatever it is. Fails as `carryOut` does.
    Task<Result<bool>> runStep(LockedWork work, const PackageCommand *command, PackageTarget package,
                               OperationReport *report);
    /// The same for a removal; what is gone already, because it went with another, counts as done.
    Task<Result<bool>> removeUnlessGone(LockedWork work, const PackageCommand *command, PackageTarget package,
                                        OperationReport *report);
    /// As it was seen last.
    const Installed &installed() const { return m_installed; }

  private:
    Task<LostApplications> noteApplications(LockedWork work) const;
    Task<> look(LockedWork work, OperationReport *report);
    void check(const LockedWork &work, const PackageCommand &command, const Installed &before,
               OperationReport *report) const;

    const PackageServices &m_services;
    std::unique_ptr<PackageCommand> m_command;
    QList<PackageTarget> m_packages;
    Installed m_before; ///< what is installed when the work begins
    Installed m_installed;
    bool m_hasToldOfBlindness = false;
};

/// The names of those that are formulae.
QStringList formulaNames(const QList<PackageTarget> &packages);

} // namespace larkspur
