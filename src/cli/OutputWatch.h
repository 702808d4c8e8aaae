#pragma once

#include <QObject>

#include <functional>

namespace larkspur::cli {

/// Notices that standard output takes nothing any more: its reader has gone, the disk is full, the terminal
/// was closed. Nothing is written to it from then on.
class OutputWatch : public QObject {
    Q_OBJECT
  public:
    /// `onFailure` is called once, between two events. Needs the event loop's dispatcher.
    explicit OutputWatch(std::function<void()> onFailure);

    /// Whether something could not be written, up to now.
    bool hasFailed();

  private:
    std::function<void()> m_onFailure;
    bool m_hasFailed = false;
};

} // namespace larkspur::cli
