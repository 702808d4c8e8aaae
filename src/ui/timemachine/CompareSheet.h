#pragma once

#include "operations/snapshots/Snapshot.h"

#include <QDialog>

class QComboBox;

namespace larkspur::ui {

class DiffView;

/// Compares any two restore points.
class CompareSheet : public QDialog {
    Q_OBJECT
  public:
    explicit CompareSheet(QList<Snapshot> snapshots, QWidget *parent = nullptr);

    void choose(int first, int second);

  private:
    void update();

    QList<Snapshot> m_snapshots; ///< newest first
    QComboBox *m_first;
    QComboBox *m_second;
    DiffView *m_differences;
};

} // namespace larkspur::ui
