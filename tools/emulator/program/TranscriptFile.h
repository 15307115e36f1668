#pragma once

#include <string>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

/// A transcript's exchanges. Throws TranscriptError, which names the file.
std::vector<Exchange> ReadTranscriptFile(const std::string& name);

}  // namespace emulator
