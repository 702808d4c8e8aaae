#pragma once

#include <QIcon>
#include <QString>

namespace larkspur::ui {

/// One of the project's own icons, drawn in the palette's text colour of the moment: light and dark need no
/// second picture. `name` is the file's name without its extension.
QIcon icon(const QString &name);

} // namespace larkspur::ui
