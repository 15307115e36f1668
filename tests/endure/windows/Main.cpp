// oko-endurance [--short]: works the library hard and shows a table of what it endured. Ends with 0 only when all held.

#include <gtest/gtest.h>

#include <atomic>
#include <iomanip>
#include <iostream>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Effort.h"
#include "Report.h"
#include "windows/Leftovers.h"

namespace {

struct Line {
    std::string what;
    std::string seen;
    bool held;
};

std::mutex g_csReport;
std::vector<Line> g_lines;
std::string g_doing = "the start";
std::atomic<ULONGLONG> g_lastProgress = 0;

/// Whether nothing has failed since the last call for the same test.
bool HasHeldSince() {
    static const testing::TestInfo* lastTest = nullptr;
    static int lastCount = 0;
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    const int before = test == lastTest ? lastCount : 0;
    lastTest = test;
    lastCount = test->result()->total_part_count();  // the tests' parts are failures only
    return lastCount == before;
}

void ShowTable() {
    const std::scoped_lock lock(g_csReport);
    constexpr int kWidth = 44;
    std::cout << "\n";
    for (const Line& line : g_lines) {
        std::cout << (line.held ? "held    " : "FAILED  ") << std::left << std::setw(kWidth) << line.what << line.seen
                  << "\n";
    }
    std::cout << std::endl;
}

/// Ends the program when nothing has got on for a long time.
void WatchProgress() {
    constexpr ULONGLONG kPatienceMs = 180'000;
    for (;;) {
        Sleep(1'000);
        if (GetTickCount64() - g_lastProgress < kPatienceMs) {
            continue;
        }
        ShowTable();
        {
            const std::scoped_lock lock(g_csReport);
            std::cout << "oko-endurance: stuck in " << g_doing << std::endl;
        }
        RemoveLeftovers([](const std::string&) {});
        TerminateProcess(GetCurrentProcess(), 3);  // its children go with it
    }
}

}  // namespace

void ReportLine(const std::string& what, const std::string& seen) {
    const bool held = HasHeldSince();
    const std::scoped_lock lock(g_csReport);
    g_lines.push_back({what, seen, held});
    std::cout << (held ? "held    " : "FAILED  ") << what << ": " << seen << std::endl;
}

void NoteProgress(const std::string& doing) {
    g_lastProgress = GetTickCount64();
    const std::scoped_lock lock(g_csReport);
    g_doing = doing;
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) != "--short") {
            std::cerr << "usage: oko-endurance [--short]\n";
            return 2;
        }
        CurrentEffort() = kShortEffort;
    }
    NoteProgress("the start");
    std::thread(WatchProgress).detach();
    const int result = RUN_ALL_TESTS();
    ShowTable();
    return result;
}
