#pragma once

#include <string>
#include <vector>

/// What went over the wire, from the record that the emulator keeps.

struct Exchange {
    std::string command;
    std::vector<std::string> replies;  // as they were sent; none: no answer
};

/// All exchanges of a record, in the order in which the commands came.
std::vector<Exchange> ReadExchanges(const std::wstring& recordFile);
