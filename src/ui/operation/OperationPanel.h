#pragma once

#include "ui/operation/FollowUpBar.h"

#include <QFrame>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;
class QToolButton;

namespace larkspur::ui {

class ElidedLabel;
class OutputView;

/// The bar at the bottom that tells how the operation stands, and the output sheet that it opens into. Hidden
/// until the first operation; a finished one stays until it is dismissed.
class OperationPanel : public QFrame {
    Q_OBJECT
  public:
    explicit OperationPanel(FollowUpBar::Services services, QWidget *parent = nullptr);

    void setOutputVisible(bool visible);
    bool isOutputVisible() const;

  private:
    void follow(OperationRun *run);
    void update();
    void updateRunning();
    void updateFinished();
    void showFailure();

    OperationCenter &m_operations;
    OperationRun *m_run = nullptr;
    QLabel *m_picture;
    QLabel *m_title;
    ElidedLabel *m_detail;
    QProgressBar *m_bar;
    QPushButton *m_stop;
    QToolButton *m_toggle;
    QToolButton *m_dismiss;
    FollowUpBar *m_followUps;
    QLabel *m_summary; ///< of a failed operation
    OutputView *m_output;
    QTimer m_updateTimer;
};

} // namespace larkspur::ui
