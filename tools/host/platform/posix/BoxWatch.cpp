#include "platform/BoxWatch.h"

#include <functional>
#include <string>

bool HasWindows() noexcept { return false; }

struct BoxWatch::Impl {};

BoxWatch::BoxWatch(std::function<void(const std::string&)>, bool) {}  // there are no windows here
BoxWatch::~BoxWatch() = default;
