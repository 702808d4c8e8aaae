#pragma once

#include "core/async/Task.h"
#include "inventory/queries/InventoryQueries.h"
#include "ui/screens/PackageScreen.h"

namespace larkspur::ui {

/// Finds packages: installed ones while the person types, available ones after a short pause.
class SearchScreen : public PackageScreen {
    Q_OBJECT
  public:
    struct Services {
        InventoryState &inventory;
        InventoryQueries &queries;
        PackageActions::Services actions;
    };

    explicit SearchScreen(Services services);
    ~SearchScreen() override;

  protected:
    void reload() override;

  private:
    void onTyped();
    void askHomebrew();
    void onAnswer(const QString &text, const Result<SearchHits> &answer);

    Services m_services;
    QTimer m_pause;
    StopSource m_stop;
    bool m_isAsking = false;
    QString m_answeredText;
    SearchHits m_hits;
    QString m_problem;
};

} // namespace larkspur::ui
