#pragma once

#include <vector>

#include "judge/Checkup.h"
#include "model/SystemFacts.h"

/// The part of the checks that looks at the OKO-Control Server.
std::vector<Finding> ExamineServer(const SystemFacts& facts);
