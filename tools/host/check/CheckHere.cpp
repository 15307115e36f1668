// The process of one check.

#include <iostream>
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

namespace {

constexpr Check kLoad{"load", "-", Needs::Nothing, {}, [](Trial&) {}, "The library can be loaded."};

}  // namespace

int RunCheckHere(const CheckRequest& request, const std::string& name) {
    CrashInSilence();
    std::string begin;
    if (!std::getline(std::cin, begin) || begin != word::kBegin) {
        return kExitDone;  // whoever started it has no use for it any more
    }
    const Check* const check = name == kLoad.name ? &kLoad : FindCheck(name);
    if (check == nullptr) {
        SayCheckLine(word::kSkipped, "there is no such check");
        return kExitDone;
    }
    try {
        Trial trial(request.library, *check, request.replyTimeoutSeconds);
        check->run(trial);
        trial.Finish();
    } catch (const LibraryError& error) {
        SayCheckLine(word::kUnusable, error.what());
    } catch (const CheckSkipped& skipped) {
        SayCheckLine(word::kSkipped, skipped.what());
        EndNow(kExitDone);
    } catch (const CheckFailed& failed) {
        SayCheckLine(word::kFailed, failed.what());
        EndNow(kExitDone);  // the library may be in any state
    }
    SayCheckLine(word::kPassed, {});
    return kExitDone;
}

}  // namespace check
