#pragma once

#include <string>

#include "check/CheckLines.h"
#include "platform/PipedProcess.h"

namespace check {

enum class CheckVerdict { Passed, Failed, Crashed, Hung, Skipped, Unusable };

const char* VerdictName(CheckVerdict verdict);

struct CheckResult {
    std::string name;
    std::string device;
    std::string holds;
    CheckVerdict verdict = CheckVerdict::Passed;
    std::string reason;  // empty for one that passed
    std::string call;    // of one that crashed or hung: the call last entered
    double seconds = 0.0;
};

/// What a check's process has said so far, and what its end makes of that.
class CheckWitness {
 public:
    /// Takes all but questions.
    void Take(const CheckLine& line);

    /// A message box or dialog of the library stands.
    void SeeBox(const std::string& box) { m_box = box; }

    /// `timeLimit` is told of one that hung.
    void Judge(const ProcessEnd& end, double timeLimit, CheckResult& result) const;

 private:
    std::string m_call;  // the one last entered
    bool m_bInside = false;
    std::string m_box;
    std::string m_word;  // of the verdict
    std::string m_text;
};

}  // namespace check
