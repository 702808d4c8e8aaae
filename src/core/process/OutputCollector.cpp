#include "core/process/OutputCollector.h"

namespace larkspur {

OutputCollector::OutputCollector(RunMode mode, qsizetype captureLimit,
                                 std::function<void(const OutputChange &)> consumer)
    : m_mode(mode)
    , m_captureLimit(captureLimit)
    , m_consumer(std::move(consumer)) {}

void OutputCollector::take(OutputChannel channel, QByteArrayView bytes) {
    switch (m_mode) {
    case RunMode::Capture:
        capture(stream(channel), bytes);
        break;
    case RunMode::Stream:
        deliver(channel, {0, stream(channel).splitter.feed(bytes), false});
        break;
    case RunMode::Terminal:
        deliver(OutputChannel::Output, m_terminal.feed(bytes));
        break;
    }
}

void OutputCollector::capture(Stream &stream, QByteArrayView bytes) {
    m_isOverLimit = m_isOverLimit || bytes.size() > m_captureLimit - stream.captured.size();
    if (!m_isOverLimit) {
        stream.captured.append(bytes);
        return;
    }
    m_output.captured = {};
    m_errors.captured = QByteArrayLiteral("It printed more than ") +
                        QByteArray::number(m_captureLimit / (1024 * 1024)) + QByteArrayLiteral(" MB.");
}

void OutputCollector::add(const QString &line) {
    if (m_mode != RunMode::Capture) // on a row of its own, whatever stands there already
        take(OutputChannel::Output, "\r\n" + line.toUtf8() + "\r\n");
}

void OutputCollector::finish() {
    if (m_mode == RunMode::Terminal)
        deliver(OutputChannel::Output, m_terminal.finish());
    if (m_mode == RunMode::Stream)
        for (const OutputChannel channel : {OutputChannel::Output, OutputChannel::Errors})
            deliver(channel, {0, stream(channel).splitter.finish(), false});
}

void OutputCollector::deliver(OutputChannel channel, const OutputChange &change) {
    if (change.isEmpty())
        return;
    stream(channel).transcript.apply(change);
    if (m_consumer)
        m_consumer(change);
}

void OutputCollector::fill(ShellResult &result) {
    const auto text = [this](Stream &from) {
        return m_mode == RunMode::Capture ? std::move(from.captured) : from.transcript.text().toUtf8();
    };
    result.outputBytes = text(m_output);
    result.errorBytes = text(m_errors);
}

} // namespace larkspur
