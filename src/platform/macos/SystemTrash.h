#pragma once

#include "core/files/Trash.h"

namespace larkspur {

/// The Finder's trash, of the volume on which the thing lies.
class SystemTrash final : public Trash {
  public:
    std::expected<QString, QString> take(const QString &path) override;
};

} // namespace larkspur
