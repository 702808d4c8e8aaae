#pragma once

#include "operations/run/LockedWork.h"

namespace larkspur {

/// What the repair after an interruption has to tell.
struct RepairStep {
    enum class Kind {
        Done, ///< put right
        Left, ///< stays as it is for good: the person is told, once
        Not   ///< the next operation tries again
    };
    Kind kind;
    QString text; ///< one line; empty where there is nothing to tell

    static RepairStep done(const QString &text) { return {Kind::Done, text}; }
    static RepairStep left(const QString &text) { return {Kind::Left, text}; }
    static RepairStep failed(const QString &text) { return {Kind::Not, text}; }

    /// Whatever was not put right is a warning.
    void tell(const LockedWork &work) const {
        if (kind == Kind::Done)
            work.say(text);
        else
            work.warn(text);
    }
};

} // namespace larkspur
