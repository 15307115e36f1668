// What every test program does before its first test and after its last one: nothing that an earlier program left may
// meet a test, and nothing that a test starts may outlive the program.

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "Leftovers.h"

namespace {

/// Everything that this process starts ends with it, however it ends; also the servers that the library starts through
/// the shell.
bool EndChildrenWithThisProcess() {
    GetDesktopWindow();  // before: Wine starts the desktop's own program as a child, and it has to outlive many tests
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    // Nobody closes the job: the system does when this process ends, and ends the others.
    return SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) != FALSE &&
           AssignProcessToJobObject(job, GetCurrentProcess()) != FALSE;
}

class TestProcess : public testing::Environment {
 public:
    void SetUp() override {
        EXPECT_TRUE(EndChildrenWithThisProcess());
        // A test program that a test starts is to leave that test's belongings alone.
        constexpr const wchar_t* kVariable = L"OKO_TEST_RUNS";
        m_bFirst = GetEnvironmentVariableW(kVariable, nullptr, 0) == 0;
        SetEnvironmentVariableW(kVariable, L"1");
        if (m_bFirst) {
            RemoveLeftovers([](const std::string& what) { std::cout << "left over: " << what << std::endl; });
        }
    }
    void TearDown() override {
        if (m_bFirst) {
            RemoveScratchFolder();
        }
    }

 private:
    bool m_bFirst = false;
};

const testing::Environment* const g_pTestProcess = testing::AddGlobalTestEnvironment(new TestProcess);

}  // namespace
