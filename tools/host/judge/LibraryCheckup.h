#pragma once

#include <vector>

#include "judge/Checkup.h"
#include "model/SystemFacts.h"

/// The part of the checks that looks at the library: what follows from a missing one is left out.
std::vector<Finding> ExamineLibrary(const SystemFacts& facts);
