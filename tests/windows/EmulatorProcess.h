#pragma once

#include <optional>
#include <stdexcept>
#include <string>

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

 private:
    /// By what it says: a test that tried the port itself could be in its way.
    bool HasThePort() const {
        const std::string output = Output();
        return output.find("answering on ") != std::string::npos || output.find("holding port ") != std::string::npos;
    }

    std::optional<ChildProcess> m_process;  // or
    std::optional<NativeEmulator> m_native;
};
