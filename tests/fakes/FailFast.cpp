#include "platform/FailFast.h"

#include <cstdlib>

void FailFast() noexcept { std::abort(); }
