#pragma once

#include "core/output/OperationProgress.h"
#include "core/output/OutputSink.h"

#include <deque>

namespace larkspur::cli {

class Terminal;

/// Prints an operation's output as it grows. On an interactive terminal redraws replace what they redraw, and
/// a progress bar stays below the last line.
class LiveOutput final : public OutputSink {
  public:
    explicit LiveOutput(const Terminal &terminal);
    ~LiveOutput() override { clearBar(); }

    void receive(const OutputChange &change) override;

    /// What the bar shows; call it after each change.
    void showProgress(const OperationProgress &progress);
    /// A word below the output that the next change replaces.
    void showNote(const QString &note);
    void clearBar();

  private:
    void drawBar(const QString &text);
    int takeBack(int lines);

    const Terminal &m_terminal;
    QString m_bar;
    std::deque<int> m_rows; ///< screen rows that each of the last lines takes
};

/// A bar for a row of `width` characters, such as "heron  [#####-----]  45%".
QString progressBar(const OperationProgress &progress, int width);

} // namespace larkspur::cli
