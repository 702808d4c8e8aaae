#pragma once

#include "inventory/records/Package.h"

#include <QString>
#include <QWidget>

class QLineEdit;

namespace larkspur::ui {

/// One screen of the window. Brings itself up to date only while it is shown.
class Screen : public QWidget {
    Q_OBJECT
  public:
    using QWidget::QWidget;

    /// The field that Find goes to; null if the screen has none.
    virtual QLineEdit *filterField() const { return nullptr; }
    /// Shows and selects a package, if the screen lists it.
    virtual bool showPackage(const PackageId &) { return false; }

  Q_SIGNALS:
    /// A package that another screen may list is to be shown.
    void packageRequested(const larkspur::PackageId &id);
};

} // namespace larkspur::ui
