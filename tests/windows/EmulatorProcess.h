#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "NativeEmulator.h"
#include "ServerPort.h"
#include "windows/LoadedLibrary.h"

/// Runs the emulator with some options until it ends by itself. Gives its exit code.
inline DWORD RunEmulator(const std::wstring& options) {
    return ChildProcess(L"oko-control-emulator.exe", options).ExitCode();
}

/// The emulator on port 60000 while the object lives.
class EmulatorProcess {
 public:
    explicit EmulatorProcess(const std::wstring& options) {
        ExpectFreeServerPort();
        const std::wstring all = L"--quiet --until-eof " + options;
        if (NativeEmulator::LauncherPort() != 0) {
            m_native.emplace(all);
        } else {
            m_process.emplace(L"oko-control-emulator.exe", all);
        }
        WaitUntil([this] { return HasThePort() || HasEnded(); });
        if (!HasThePort()) {
            // Not a mere failure: the library would wait for ever for a server that is not there.
            throw std::runtime_error("the emulator has not come up: " + Output());
        }
    }

    /// What it has shown so far.
    std::string Output() const { return m_native ? m_native->Output() : m_process->Output(); }
    bool HasEnded() const { return m_native ? m_native->HasEnded() : m_process->HasEnded(); }

    /// Has an emulator with the option --control-input do what this request says.
    void Tell(const std::string& request) const {
        const std::size_t before = Answers().size();
        m_native ? m_native->Write(request + "\n") : m_process->Write(request + "\n");
        EXPECT_TRUE(WaitUntil([&] { return Answers().size() > before || HasEnded(); })) << request;
        const std::vector<std::string> answers = Answers();
        ASSERT_EQ(answers.size(), before + 1) << request << ": " << Output();
        EXPECT_NE(answers.back().find("\"ok\":true"), std::string::npos) << request << ": " << answers.back();
    }

 private:
    /// The lines that answer requests, as far as they are complete.
    std::vector<std::string> Answers() const {
        std::istringstream output(Output());
        std::vector<std::string> answers;
        for (std::string line; std::getline(output, line) && !output.eof();) {
            if (line.starts_with("{\"")) {
                answers.push_back(line);
            }
        }
        return answers;
    }

    /// By what it says: a test that tried the port itself could be in its way.
    bool HasThePort() const {
        const std::string output = Output();
        return output.find("answering on ") != std::string::npos || output.find("holding port ") != std::string::npos;
    }

    std::optional<ChildProcess> m_process;  // or
    std::optional<NativeEmulator> m_native;
};
