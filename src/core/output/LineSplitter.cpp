#include "core/output/LineSplitter.h"

namespace larkspur {

namespace {

QString decoded(QByteArrayView line) {
    if (line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

/// Length of the longest prefix that does not end inside a character.
qsizetype wholeCharacters(QByteArrayView bytes) {
    qsizetype end = bytes.size();
    for (int back = 0; back < 3 && end > 0; ++back) {
        const auto byte = static_cast<unsigned char>(bytes[end - 1]);
        if ((byte & 0xC0) != 0x80)
            return byte >= 0xC0 ? end - 1 : bytes.size();
        --end;
    }
    return bytes.size();
}

} // namespace

QStringList LineSplitter::feed(QByteArrayView bytes) {
    QStringList lines;
    qsizetype start = 0;
    for (qsizetype end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n', start)) {
        const QByteArrayView piece = bytes.sliced(start, end - start);
        if (m_partial.isEmpty()) {
            lines.append(decoded(piece));
        } else {
            m_partial.append(piece);
            lines.append(decoded(m_partial));
            m_partial.clear();
        }
        start = end + 1;
    }
    m_partial.append(bytes.sliced(start));
    if (m_partial.size() >= longestLine) {
        const qsizetype length = wholeCharacters(m_partial);
        lines.append(QString::fromUtf8(QByteArrayView(m_partial).first(length)));
        m_partial.remove(0, length);
    }
    return lines;
}

QStringList LineSplitter::finish() {
    if (m_partial.isEmpty())
        return {};
    const QStringList last{decoded(m_partial)};
    m_partial.clear();
    return last;
}

} // namespace larkspur
