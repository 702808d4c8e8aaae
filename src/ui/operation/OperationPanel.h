#pragma once

#include "operations/OperationRequest.h"

#include <QFrame>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;
class QToolButton;

namespace larkspur {
class KegPreservationManager;
class OperationCenter;
class OperationRun;
} // namespace larkspur

namespace larkspur::ui {

class OutputView;

/// The bar at the bottom that tells how the operation stands, and the output sheet that it opens into. Hidden
/// until the first operation; a finished one stays until it is dismissed.
class OperationPanel : public QFrame {
    Q_OBJECT
  public:
    OperationPanel(OperationCenter &operations, KegPreservationManager &kegs, QWidget *parent = nullptr);

    void setOutputVisible(bool visible);
    bool isOutputVisible() const;

  private:
    void follow(OperationRun *run);
    void update();
    void updateRunning();
    void updateFinished();
    void showFailure();
    void restartServices();
    void offerWhatFollows();
    QList<PackageTarget> rollbackTargets() const;
    QString commandForTerminal() const;

    OperationCenter &m_operations;
    KegPreservationManager &m_kegs;
    OperationRun *m_run = nullptr;
    QLabel *m_picture;
    QLabel *m_title;
    QLabel *m_detail;
    QProgressBar *m_bar;
    QPushButton *m_stop;
    QToolButton *m_toggle;
    QToolButton *m_dismiss;
    QPushButton *m_restart;  ///< services that still run old files
    QPushButton *m_hold;     ///< keep what was rolled back
    QPushButton *m_rollBack; ///< what a failed upgrade has changed
    QPushButton *m_terminal; ///< run it, or what it needs, in a terminal
    QLabel *m_summary;       ///< of a failed operation
    OutputView *m_output;
    QTimer m_updateTimer;
};

} // namespace larkspur::ui
