#include "protocol/Answer.h"

#include <string>

std::string FormatReply(const Answer& answer, const std::string& echo) {
    return std::to_string(answer.code) + "_" + echo + "_" + answer.payload + "\r";
}
