#pragma once

#include <QStringList>

class QWidget;

namespace larkspur::ui {

/// Tells that a choice could not be saved, and why; in one alert, however many choices follow.
void tellNotSaved(const QString &reason, QWidget *window);

/// Tells what of the program's own files could not be read, in sentences.
void tellDamaged(const QStringList &damage, QWidget *window);

} // namespace larkspur::ui
