#include "show/Output.h"

#include <iostream>
#include <string>
#include <vector>

namespace {

bool g_bFailed = false;

}  // namespace

void Print(const std::string& text) {
    if (g_bFailed) {
        return;
    }
    if (!(std::cout << text << std::flush)) {
        g_bFailed = true;
        throw OutputError("the output cannot be written: its disk is full, or nobody reads it any more");
    }
}

bool OutputFailed() noexcept { return g_bFailed; }

std::string JoinLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}
