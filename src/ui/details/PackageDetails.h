#pragma once

#include "core/async/Task.h"
#include "inventory/records/Package.h"
#include "ui/models/PackageRow.h"

#include <QScrollArea>

class QLabel;
class QPushButton;
class QTreeWidget;
class QVBoxLayout;

namespace larkspur {
class InventoryQueries;
class InventoryState;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

class PackageActions;

/// Everything about the selected package: its record, what it needs, who needs it, its caveats and links.
/// What is not installed is asked of Homebrew.
class PackageDetails : public QScrollArea {
    Q_OBJECT
  public:
    PackageDetails(InventoryState &inventory, InventoryQueries &queries, TaskScope &tasks,
                   PackageActions &actions, QWidget *parent = nullptr);
    ~PackageDetails() override;

    void show(const std::optional<PackageRow> &row);

  Q_SIGNALS:
    /// A dependency or a dependent was chosen.
    void packageRequested(const larkspur::PackageId &id);

  private:
    /// What the pane is made from; it is rebuilt only when that changes, so that nobody's place is lost.
    struct Content {
        std::optional<PackageRow> row;
        std::optional<Package> package;
        QStringList dependents;
        QString brewPrefix;
        QString problem;
        bool operator==(const Content &) const = default;
    };
    Content content() const;
    void rebuild();
    void showNothing();
    void showFormula(const Formula &formula);
    void showCask(const Cask &cask);
    void addHeading(const QString &name, const QString &version, const QString &description);
    void addButtons();
    void addField(const QString &name, const QString &value);
    void addState();
    void addLink(const QString &name, const std::optional<QString> &address);
    void addSection(const QString &title);
    void addText(const QString &text);
    void addDependencies(const Formula &formula);
    void askHomebrew(const PackageRow &row);

    InventoryState &m_inventory;
    InventoryQueries &m_queries;
    TaskScope &m_tasks;
    PackageActions &m_actions;
    std::optional<PackageRow> m_row;
    std::optional<Content> m_shown;
    std::optional<Package> m_asked; ///< the answer for a package that is not installed
    QString m_problem;
    StopSource m_stopAsking;
    QVBoxLayout *m_layout = nullptr;
};

} // namespace larkspur::ui
