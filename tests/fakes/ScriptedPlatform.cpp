#include "fakes/ScriptedPlatform.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

std::atomic<ScriptedPlatform*> s_pCurrent = nullptr;

[[noreturn]] void Misused(const char* reason) {
    std::fprintf(stderr, "ScriptedPlatform: %s\n", reason);
    std::abort();
}

}  // namespace

ScriptedPlatform::ScriptedPlatform() {
    ScriptedPlatform* expected = nullptr;
    if (!s_pCurrent.compare_exchange_strong(expected, this)) {
        Misused("there is one already");
    }
}

ScriptedPlatform::~ScriptedPlatform() {
    threads.JoinAll();  // a thread may use the platform up to its end
    s_pCurrent = nullptr;
}

ScriptedPlatform& ScriptedPlatform::Current() {
    ScriptedPlatform* const current = s_pCurrent;
    if (current == nullptr) {
        Misused("the test has none");
    }
    return *current;
}

ScriptedPlatform* ScriptedPlatform::CurrentOrNull() noexcept { return s_pCurrent; }
