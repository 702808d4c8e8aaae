#pragma once

namespace larkspur {

/// Puts something in the place of each standard stream that the program was started without, which fails when
/// it is used. Otherwise the next file that is opened would take its number, and the program's output would
/// go into that file. Call it first of all.
void fillMissingStreams();

} // namespace larkspur
