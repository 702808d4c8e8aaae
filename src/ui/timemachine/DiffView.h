#pragma once

#include "operations/snapshots/Snapshot.h"

#include <QTreeWidget>

namespace larkspur::ui {

/// The difference of two restore points, or of one and now, as groups of packages.
class DiffView : public QTreeWidget {
    Q_OBJECT
  public:
    explicit DiffView(QWidget *parent = nullptr);

    /// The words for what is gone and what is new.
    void showDiff(const SnapshotDiff &diff, const QString &removedTitle, const QString &addedTitle);
    /// Instead of a difference.
    void showText(const QString &text);

    /// A group with its packages; nothing is added for none.
    void addGroup(const QString &title, const QList<QStringList> &rows);
};

} // namespace larkspur::ui
