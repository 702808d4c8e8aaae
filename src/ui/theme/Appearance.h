#pragma once

namespace larkspur::ui {

/// Chooses style and palette: the system's own where it brings them; elsewhere a plain style, light or dark
/// as the person's desktop says or LARKSPUR_APPEARANCE ("light" or "dark") asks.
void applyAppearance();

} // namespace larkspur::ui
