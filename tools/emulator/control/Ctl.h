#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace emulator {

/// Says a request, in words, to the emulator whose remote control has this port, and prints its reply. Without words it
/// says every line of `input`. "watch on" prints until the emulator ends. Gives the program's exit code: 0 when all
/// replies were "ok", 1 when one was not, 2 when nobody was there to reply.
int RunCtl(int port, const std::vector<std::string>& words, std::istream& input, std::ostream& output,
           std::ostream& errors);

}  // namespace emulator
