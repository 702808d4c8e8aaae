#pragma once

#include <QString>

namespace larkspur::ui {

/// From now on every label of the program shows its text as it is, whoever made the label: those of tool tips
/// and message boxes too. Left alone, they take what looks like markup for markup, and load the files that it
/// names. The label that is to draw markup says so (LinkLabel). Called before the first window is shown;
/// further calls change nothing.
void keepTextPlain();

/// Foreign text as part of the caption of a button or menu entry, where "&" would underline a letter and
/// make it a shortcut, a tab would begin a second column, and a line feed a second line.
QString inCaption(const QString &text);

} // namespace larkspur::ui
