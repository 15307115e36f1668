// The process of one check.

#include <iostream>
#include <memory>
#include <string>

#include "ExitCode.h"
#include "check/Check.h"
#include "check/CheckLines.h"
#include "check/Checks.h"
#include "check/Trial.h"
#include "device/Library.h"
#include "platform/Crashes.h"
#include "platform/Interrupt.h"

namespace check {

int RunCheckHere(const CheckRequest& request, const std::string& name) {
    CrashInSilence();
    std::string begin;
    if (!std::getline(std::cin, begin) || begin != word::kBegin) {
        return kExitDone;  // whoever started it has no use for it any more
    }
    const Check* const check = FindCheck(name);
    if (check == nullptr) {
        SayCheckLine(word::kSkipped, "there is no such check");
        return kExitDone;
    }
    // Not freed where the check ends early: the library may be in any state, and to free it could be the end of all.
    std::unique_ptr<Trial> trial;
    try {
        trial = std::make_unique<Trial>(request.library, *check, request.replyTimeoutSeconds);
        check->run(*trial);
        trial->Finish();
    } catch (const LibraryError& error) {
        SayCheckLine(word::kUnusable, error.what());
        EndNow(kExitDone);
    } catch (const CheckSkipped& skipped) {
        SayCheckLine(word::kSkipped, skipped.what());
        EndNow(kExitDone);
    } catch (const CheckFailed& failed) {
        SayCheckLine(word::kFailed, failed.what());
        EndNow(kExitDone);
    }
    SayCheckLine(word::kPassed, {});
    return kExitDone;
}

}  // namespace check
