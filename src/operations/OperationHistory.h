#pragma once

#include "operations/OperationRequest.h"

namespace larkspur {

class InstalledPackages;
class UserDataManager;

/// Writes what operations have done to packages into the history.
class OperationHistory {
  public:
    explicit OperationHistory(UserDataManager &userData)
        : m_userData(userData) {}

    /// One package of an operation has ended. Kinds that neither install, upgrade nor remove are passed over.
    void note(OperationKind kind, const PackageTarget &package, bool success);

    /// An upgrade of all has ended. What was upgraded is read from the installed versions; what was not, is
    /// a failure if the command came to its end.
    void noteUpgradeOfAll(const QList<PackageTarget> &packages, const InstalledPackages &after,
                          bool cameToEnd);

    void noteUpdate(bool success);

  private:
    UserDataManager &m_userData;
};

} // namespace larkspur
