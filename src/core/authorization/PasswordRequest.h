#pragma once

#include <QString>

namespace larkspur {

/// What a person should know before they give their password away. Whoever writes a recipe can have it print
/// what sudo prints, so the question names who asks, and with which words.
struct PasswordRequest {
    QString reason = {};  ///< one sentence
    QString package = {}; ///< empty if it is for several
    QString command = {}; ///< the command line that wants it
    QString trigger = {}; ///< the line of its output that said so
    /// Commands of this kind need no administrator rights.
    bool isUnusual = false;
};

/// The same with package, command and trigger as one line each of moderate length and without characters that
/// act on what stands around them: they come from outside.
PasswordRequest presentable(PasswordRequest request);

/// What is said above the field of an unusual request; empty for others.
QString warningOf(const PasswordRequest &request);

} // namespace larkspur
