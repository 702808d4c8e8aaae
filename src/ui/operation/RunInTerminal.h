#pragma once

#include <QString>

class QWidget;

namespace larkspur::ui {

/// Copies a command line to the clipboard, opens the system's terminal where that is known, and says so.
void runInTerminal(const QString &command, QWidget *window);

} // namespace larkspur::ui
