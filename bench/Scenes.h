#pragma once

#include <QByteArray>
#include <QString>

namespace bench {

/// Parts that the benchmarks run as processes of their own: this program with a word in front.
int printLines(int count);                ///< a chatty brew
int showBareWindow(const QString &cache); ///< a plain Qt window with the cached formulae in a table
int showLarkspur(const QString &folder);  ///< the program's own window on the same cache

/// A catalogue of casks of the given number, about 3.3 kB each.
QByteArray caskCatalogue(int casks);

/// Path of this program.
QString self();

} // namespace bench
