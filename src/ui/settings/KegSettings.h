#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QTreeWidget;

namespace larkspur {
class KegPreservationManager;
class Preferences;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

/// Restore points and preserved kegs: how many, how much space, and where.
class KegSettings : public QWidget {
    Q_OBJECT
  public:
    struct Services {
        Preferences &preferences;
        KegPreservationManager &kegs;
        TaskScope &tasks;
    };
    explicit KegSettings(Services services, QWidget *parent = nullptr);

  private:
    QWidget *makeLocation();
    QWidget *makeCopies();
    void chooseLocation();
    void update();
    void removeSelected();

    Services m_services;
    QLineEdit *m_location;
    QLabel *m_away;
    QLabel *m_total;
    QLabel *m_problem; ///< what could not be removed; hidden if there is nothing
    QTreeWidget *m_copies;
};

} // namespace larkspur::ui
