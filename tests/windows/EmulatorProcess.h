#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "ChildProcess.h"
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
        m_process.emplace(L"oko-control-emulator.exe", L"--quiet --until-eof " + options);
        WaitUntil([this] { return HasThePort() || m_process->HasEnded(); });
        if (!HasThePort()) {
            // Not a mere failure: the library would wait for ever for a server that is not there.
            throw std::runtime_error("the emulator has not come up: " + m_process->Output());
        }
    }

    /// What it has shown so far.
    std::string Output() const { return m_process->Output(); }
    bool HasEnded() const { return m_process->HasEnded(); }

 private:
    /// By what it says: a test that tried the port itself could be in its way.
    bool HasThePort() const { return m_process->HasWritten("answering on ") || m_process->HasWritten("holding port "); }

    std::optional<ChildProcess> m_process;
};
