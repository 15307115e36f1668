#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

/// A transcript for people: a table with a line for each datagram, which marks what is odd, and a summary. Commands and
/// payloads that make a line longer than `width` (0: none is too long) end in "...".
std::string ShowTranscript(const std::vector<Exchange>& exchanges, std::size_t width);

}  // namespace emulator
