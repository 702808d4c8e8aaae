#pragma once

#include <QColor>
#include <QPalette>

namespace larkspur::ui {

// The only place where colours are chosen; everything else asks here or takes the palette's own.

/// Text that matters less than the text beside it.
QColor mutedText(const QPalette &palette);
/// A surface that stands out a little from the background.
QColor raisedSurface(const QPalette &palette);
/// A line between surfaces.
QColor separator(const QPalette &palette);

enum class Tone { Neutral, Good, Attention, Bad };
QColor toneColour(Tone tone, const QPalette &palette);
/// The same as a light ground behind text of that colour.
QColor toneGround(Tone tone, const QPalette &palette);

bool isDark(const QPalette &palette);
/// A dark palette of our own, for systems whose style offers none.
QPalette darkPalette();

} // namespace larkspur::ui
