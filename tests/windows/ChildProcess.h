#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "ScratchFolder.h"
#include "windows/LoadedLibrary.h"

/// A program from this one's folder, with its output in a file and an input that stays open while the object lives. It
/// ends with the object at the latest.
class ChildProcess {
 public:
    /// An emulator with the option --until-eof ends by itself when its input does. Any other program is killed then.
    ChildProcess(const std::wstring& program, const std::wstring& arguments)
        : m_bEndsWithItsInput(arguments.find(L"--until-eof") != std::wstring::npos) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        const HANDLE output = CreateFileW(m_outputFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        CreatePipe(&startup.hStdInput, &m_hInput, &inherited, 0);
        SetHandleInformation(m_hInput, HANDLE_FLAG_INHERIT, 0);
        startup.hStdOutput = output;
        startup.hStdError = output;
        std::wstring command = L"\"" + ProgramFolder() + program + L"\" " + arguments;
        const DWORD error = Start(command, startup);
        EXPECT_EQ(error, DWORD{ERROR_SUCCESS})
            << "CreateProcessW, command " << std::string(command.begin(), command.end());
        CloseHandle(startup.hStdInput);
        CloseHandle(output);
    }
    ~ChildProcess() {
        CloseHandle(m_hInput);
        if (m_bEndsWithItsInput) {
            WaitForSingleObject(m_process.hProcess, kTestPatienceMs);
        }
        Kill();
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
        DeleteFileW(m_outputFile.c_str());
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Ends it at once, without its leave.
    void Kill() const {
        TerminateProcess(m_process.hProcess, 99);
        WaitForSingleObject(m_process.hProcess, kTestPatienceMs);
    }

    DWORD ThreadId() const { return m_process.dwThreadId; }
    DWORD ProcessId() const { return m_process.dwProcessId; }
    bool HasEnded() const { return WaitForSingleObject(m_process.hProcess, 0) == WAIT_OBJECT_0; }

    /// Waits until it ends by itself.
    DWORD ExitCode() const {
        EXPECT_EQ(WaitForSingleObject(m_process.hProcess, kTestPatienceMs), WAIT_OBJECT_0);
        DWORD code = 0xFFFF;
        GetExitCodeProcess(m_process.hProcess, &code);
        return code;
    }

    /// What it has written so far.
    std::string Output() const {
        std::ifstream file{std::filesystem::path(m_outputFile)};
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool HasWritten(std::string_view text) const { return Output().find(text) != std::string::npos; }

    /// Gives it these bytes as input.
    void Write(std::string_view bytes) const {
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(m_hInput, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
        EXPECT_EQ(written, bytes.size());
    }

 private:
    /// Gives the system's error. Once in thousands of times a process dies under Wine before its program begins, which
    /// shows as an internal error: it is started again.
    DWORD Start(std::wstring& command, STARTUPINFOW& startup) {
        constexpr int kAttempts = 3;
        for (int attempt = 1;; ++attempt) {
            if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                               &m_process)) {
                return ERROR_SUCCESS;
            }
            const DWORD error = GetLastError();
            if (error != ERROR_INTERNAL_ERROR || attempt == kAttempts) {
                return error;
            }
            std::cout << "CreateProcessW: internal error of the system, attempt " << attempt << std::endl;
        }
    }

    static std::wstring NewOutputFile() {
        static int count = 0;
        return ScratchFolder() + L"output " + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count) +
               L".txt";
    }

    const bool m_bEndsWithItsInput;
    const std::wstring m_outputFile = NewOutputFile();
    HANDLE m_hInput = nullptr;
    PROCESS_INFORMATION m_process{};
};

/// Runs a program with each of these arguments, all at the same time, until the last has ended. Gives their exit codes.
inline std::vector<DWORD> ExitCodes(const std::wstring& program, const std::vector<std::wstring>& arguments) {
    std::list<ChildProcess> processes;
    for (const std::wstring& each : arguments) {
        processes.emplace_back(program, each);
    }
    std::vector<DWORD> codes;
    for (const ChildProcess& process : processes) {
        codes.push_back(process.ExitCode());
    }
    return codes;
}
