#pragma once

#include <QByteArray>
#include <QStringList>

namespace larkspur {

/// Cuts a byte stream into lines of text, whole characters only: a character that is split between two reads
/// comes out whole, bytes that are no UTF-8 come out as U+FFFD.
class LineSplitter {
  public:
    /// A line longer than this is delivered in pieces, so that a stream without line ends stays bounded.
    static constexpr qsizetype longestLine = 1024 * 1024;

    /// The lines that `bytes` completes; LF and CR LF end a line.
    QStringList feed(QByteArrayView bytes);

    /// The last fragment, if the stream ended without a line end.
    QStringList finish();

  private:
    QByteArray m_partial;
};

} // namespace larkspur
