// Exports one of the two functions of a plug-in, and not the other.

#include <cstdint>

extern "C" std::int32_t LibQueryPhysDevice();

std::int32_t LibQueryPhysDevice() { return -1; }
