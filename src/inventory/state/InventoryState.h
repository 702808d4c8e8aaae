#pragma once

#include "inventory/state/Inventory.h"

#include <QObject>

namespace larkspur {

/// Publishes the inventory as a value. What changed together is published together, with one signal.
class InventoryState : public QObject {
    Q_OBJECT
  public:
    using QObject::QObject;

    const Inventory &value() const { return m_value; }

    /// Changes the value through `change(Inventory &)` and tells who listens.
    template <typename Change>
    void update(Change change) {
        change(m_value);
        Q_EMIT changed();
    }

  Q_SIGNALS:
    void changed();

  private:
    Inventory m_value;
};

} // namespace larkspur
