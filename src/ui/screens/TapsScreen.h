#pragma once

#include "ui/screens/RecordTableScreen.h"

class QFrame;
class QLabel;

namespace larkspur {
class Preferences;
}

namespace larkspur::ui {

/// The sources of packages, and what Homebrew hides because it does not trust a source.
class TapsScreen : public RecordTableScreen {
    Q_OBJECT
  public:
    TapsScreen(InventoryState &inventory, Preferences &preferences);

  protected:
    QList<QList<QStandardItem *>> rows() const override;
    QString subtitle() const override;
    void showEmptyState(EmptyState *empty) const override;
    void reload() override;

  private:
    void dismiss();

    Preferences &m_preferences;
    QFrame *m_banner;
    QLabel *m_bannerText;
};

} // namespace larkspur::ui
