#pragma once

#include "core/files/Trash.h"

namespace larkspur {

/// The trash that desktops share: in the person's data folder, or on the volume of what is thrown away.
class DesktopTrash final : public Trash {
  public:
    std::expected<QString, QString> take(const QString &path) override;
};

/// Whether a path names something in a trash: in the person's data folder, or at the root of a volume, where
/// it bears the number of the person.
bool isInTrash(const QString &path);

} // namespace larkspur
