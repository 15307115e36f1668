#include "protocol/Answer.h"

#include <string>

namespace emulator {

std::string FormatReply(const Answer& answer, const std::string& echo) {
    return std::to_string(answer.code) + "_" + echo + "_" + answer.payload + "\r";
}

}  // namespace emulator
