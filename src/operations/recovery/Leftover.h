#pragma once

#include "core/async/Task.h"
#include "operations/run/LockedWork.h"

namespace larkspur {

/// Something that an operation can leave behind when the program dies under it.
class Leftover {
  public:
    virtual ~Leftover() = default;

    /// Cheap: asked at every start and before every operation.
    virtual bool exists(const QString &prefix) const = 0;

    /// Whether any of it is this Homebrew's; as cheap.
    virtual bool concerns(const QString &prefix) const { return exists(prefix); }

    /// Under the lock, with a context that repairs. What cannot be put right is said, and stays for the next
    /// time.
    virtual Task<> putRight(LockedWork work) = 0;
};

} // namespace larkspur
