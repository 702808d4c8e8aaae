#pragma once

#include <QStringList>

namespace larkspur {

/// One step of a growing text: the last `replaces` lines are taken back, then `lines` are added. Plain output
/// never takes anything back; a terminal's redraws do.
struct OutputChange {
    int replaces = 0;
    QStringList lines;
    /// The last line has no line end yet and may still grow.
    bool lastLineOpen = false;

    static OutputChange line(const QString &text) { return {0, {text}, false}; }
    bool isEmpty() const { return replaces == 0 && lines.isEmpty(); }
};

} // namespace larkspur
