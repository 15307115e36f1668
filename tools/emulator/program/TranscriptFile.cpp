#include "program/TranscriptFile.h"

#include <fstream>
#include <ios>
#include <iterator>
#include <string>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

std::vector<Exchange> ReadTranscriptFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        throw TranscriptError(name + ": cannot be read");
    }
    try {
        return ReadTranscript(std::string(std::istreambuf_iterator<char>(file), {}));
    } catch (const TranscriptError& error) {
        throw TranscriptError(name + ": " + error.what());
    }
}

}  // namespace emulator
