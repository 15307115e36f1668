#pragma once

#include <string>
#include <vector>

#include "model/SystemFacts.h"

/// Judges what the computer tells: what is in order, what is worth knowing, and what keeps the device from working.

enum class Verdict { Ok, Note, Problem };

struct Finding {
    std::string check;  // "server answer": what was looked at
    Verdict verdict = Verdict::Ok;
    std::string fact;
    std::string next;  // what to do; empty where there is nothing to do
};

/// All checks, in the order in which things depend on each other. What only the incubator needs is no problem for the
/// simulator.
std::vector<Finding> Examine(const SystemFacts& facts);

/// "ok", "note", "problem".
const char* VerdictName(Verdict verdict);

bool HasProblem(const std::vector<Finding>& findings);
