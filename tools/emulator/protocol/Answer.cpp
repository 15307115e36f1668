#include "protocol/Answer.h"

#include <string>
#include <vector>

namespace emulator {

std::string FormatReply(const Answer& answer, const std::string& echo) {
    return std::to_string(answer.code) + "_" + echo + "_" + answer.payload + "\r";
}

std::vector<std::string> BytesOf(const Transmission& transmission) {
    std::vector<std::string> bytes;
    bytes.reserve(transmission.size());
    for (const Datagram& datagram : transmission) {
        bytes.push_back(datagram.bytes);
    }
    return bytes;
}

}  // namespace emulator
