#pragma once

#include <cstddef>

/// Takes what the library posted to the calling thread's message queue. Returns how many change notices were among it.
std::size_t TakeThreadMessages();
