#pragma once

#include "inventory/state/InventoryState.h"

#include <QFrame>

class QLabel;
class QPushButton;

namespace larkspur::ui {

/// Stands above the screens while what they show is not what Homebrew has: why the last refresh failed, and
/// what to do. Hidden while there is nothing to tell.
class RefreshBanner : public QFrame {
    Q_OBJECT
  public:
    explicit RefreshBanner(const InventoryState &state, QWidget *parent = nullptr);

  Q_SIGNALS:
    void retryRequested();

  private:
    void update();

    const InventoryState &m_state;
    QLabel *m_picture;
    QLabel *m_text;
    QPushButton *m_retry;
};

} // namespace larkspur::ui
