// oko-host check of the built library.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "RegistryNames.h"
#include "windows/ChildProcess.h"
#include "windows/LoadedLibrary.h"
#include "windows/ServerPort.h"

namespace {

class CheckTests : public testing::Test {
 protected:
    CheckTests() { ExpectFreeServerPort(); }
    ~CheckTests() override { RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark"); }

    /// Runs the program to its end and keeps its output.
    DWORD Run(const std::wstring& library, const std::wstring& options) {
        const ChildProcess host(L"oko-host.exe", L"check \"" + ProgramFolder() + library + L"\" " + options);
        const DWORD code = host.ExitCode();
        m_output = host.Output();
        return code;
    }

    void ExpectAllPassed(const std::wstring& checks) {
        EXPECT_EQ(Run(L"OkoLabBoldLine.dll", L"--time-limit 10min --only " + checks), 0U) << m_output;
        EXPECT_TRUE(Says(" passed")) << m_output;
        for (const char* const other : {"failed ", "crashed ", "hung "}) {
            EXPECT_FALSE(Says(other)) << m_output;
        }
    }

    /// Which checks were skipped, in their order, each with a blank before it.
    std::string Skipped() const {
        std::istringstream output(m_output);
        std::string skipped;
        for (std::string line; std::getline(output, line);) {
            std::istringstream words(line);
            std::string verdict;
            std::string name;
            if (words >> verdict >> name && verdict == "skipped") {
                skipped += " " + name;
            }
        }
        return skipped;
    }

    bool Says(const std::string& text) const { return m_output.find(text) != std::string::npos; }

    std::string m_output;
};

TEST_F(CheckTests, Library_KeepsTheContractFromItsExportsToItsChannels) {
    ExpectAllPassed(L"export/* life/* init/* channel/*");
    EXPECT_EQ(Skipped(), " init/silent init/silent-server");
}

TEST_F(CheckTests, Library_KeepsTheContractUnderEveryFaultAndOnTheSimulator) {
    ExpectAllPassed(L"read/* set-target/* simulator/*");
    EXPECT_EQ(Skipped(),
              " read/silent read/foreign-echo read/late-for-another set-target/silent set-target/foreign-echo");
}

/// What the two above skip. Only here does the library wait for a time: an answer may come late on a busy machine.
TEST_F(CheckTests, Library_KeepsTheContractWithASilentServer) {
    const DWORD milliseconds = 300;
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kMiscKey, kTimeoutValue, REG_DWORD, &milliseconds, sizeof milliseconds);
    ExpectAllPassed(
        L"init/silent init/silent-server read/silent read/foreign-echo read/late-for-another set-target/silent "
        L"set-target/foreign-echo");
    EXPECT_EQ(Skipped(), "");
}

TEST_F(CheckTests, WithoutReplyTimeout_SilentServersAreSkipped) {
    EXPECT_EQ(Run(L"OkoLabBoldLine.dll", L"--only read/silent read/code-3"), 0U) << m_output;
    EXPECT_TRUE(Says("2 checks: 1 passed, 1 skipped")) << m_output;
}

TEST_F(CheckTests, NoPlugin_IsNothingChecked) {
    EXPECT_EQ(Run(L"oko-host.exe", L""), 2U) << m_output;
    EXPECT_TRUE(Says("nothing was checked")) << m_output;
    EXPECT_EQ(Run(L"no such.dll", L""), 2U) << m_output;
}

}  // namespace
