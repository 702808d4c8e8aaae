#pragma once

#include "ui/screens/PackageScreen.h"

class QComboBox;

namespace larkspur {
class PackageSizes;
class Preferences;
} // namespace larkspur

namespace larkspur::ui {

enum class InstalledKind { Formulae, Casks, Pinned, Snoozed };

/// The installed formulae, the installed casks, what is pinned, or whose update is snoozed: lists of one
/// shape.
class InstalledScreen : public PackageScreen {
    Q_OBJECT
  public:
    struct Services {
        InventoryState &inventory;
        InventoryQueries &queries;
        PackageSizes &sizes;
        PackageActions::Services actions;
    };

    InstalledScreen(InstalledKind kind, Services services);

  protected:
    void reload() override;

  private:
    void applyOrder();
    void showEmptyState();

    InstalledKind m_kind;
    Services m_services;
    QComboBox *m_order;
};

} // namespace larkspur::ui
