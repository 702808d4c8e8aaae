#pragma once

#include "core/output/OutputSink.h"
#include "core/output/Transcript.h"

class QWidget;

namespace larkspur::ui {

/// Keeps what the recovery at the start has to tell, for one message once it is over.
class RecoveryNotice final : public OutputSink {
  public:
    void receive(const OutputChange &change) override { m_transcript.apply(change); }

    /// Shows the message, unless there was nothing to put right. Does not block.
    void show(QWidget *parent) const;

  private:
    Transcript m_transcript;
};

} // namespace larkspur::ui
