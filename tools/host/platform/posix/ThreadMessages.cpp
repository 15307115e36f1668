#include "platform/ThreadMessages.h"

#include <cstddef>

std::size_t TakeThreadMessages() { return 0; }  // threads have no message queues here
