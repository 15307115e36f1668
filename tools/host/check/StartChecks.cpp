#include <span>

#include "check/Check.h"

namespace check {

std::span<const Check> StartChecks() { return {}; }

}  // namespace check
