#pragma once

#include "core/trees/TreeSync.h"

namespace larkspur {

/// The whole volume of the folder with one call: what a keg of thousands of files costs then is mostly the
/// writing of its bytes.
class VolumeSync final : public TreeSync {
  public:
    std::expected<void, QString> sync(const QString &folder) override;
};

} // namespace larkspur
