#pragma once

class QLabel;
class QString;

namespace larkspur::ui {

/// The small print under a setting.
QLabel *helpLabel(const QString &text);

} // namespace larkspur::ui
