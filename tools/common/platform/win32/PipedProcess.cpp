#include "platform/PipedProcess.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/win32/NewProcess.h"
#include "text/Text.h"

namespace {

constexpr DWORD kPollMs = 2;
constexpr DWORD kPipeBytes = 65'536;

struct StatusText {
    DWORD status;
    const char* text;
};

constexpr std::array<StatusText, 12> kStatuses{{
    {0xC0000005, "an access to memory that is not there"},
    {0xC0000006, "a file's page that cannot be read"},
    {0xC000001D, "an instruction that is none"},
    {0xC0000025, "an exception that cannot be gone on from"},
    {0xC0000094, "a division by zero"},
    {0xC00000FD, "a stack overflow"},
    {0xC0000135, "a library is missing"},
    {0xC0000374, "a damaged heap"},
    {0xC0000409, "it stopped itself: a smashed stack, or nobody caught an exception"},
    {0x80000003, "a breakpoint"},
    {0x20474343, "an exception of C++ that nobody caught"},
    {0xE06D7363, "an exception of C++ that nobody caught"},
}};

std::string Hexadecimal(DWORD number) {
    std::array<char, 16> text{};
    const int length = std::snprintf(text.data(), text.size(), "0x%08lX", number);
    return {text.data(), static_cast<std::size_t>(length)};
}

ProcessEnd EndOf(DWORD exitCode) {
    const auto* const known = std::ranges::find(kStatuses, exitCode, &StatusText::status);
    if (known != kStatuses.end()) {
        return {ProcessEnd::Kind::Crashed, 0, Hexadecimal(exitCode) + ", " + known->text};
    }
    // The system's own codes for trouble have the two upper bits.
    constexpr DWORD kSeverity = 0xC0000000;
    if ((exitCode & kSeverity) == kSeverity) {
        return {ProcessEnd::Kind::Crashed, 0, Hexadecimal(exitCode)};
    }
    return {ProcessEnd::Kind::Exited, static_cast<int>(exitCode), {}};
}

struct Pipe {
    OwnedHandle read;
    OwnedHandle write;
};

/// Both ends can be inherited; only those that are in a process's list are.
Pipe MakePipe() {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    if (CreatePipe(&read, &write, &inherited, kPipeBytes) == FALSE) {
        throw std::runtime_error("no pipe to be had: system error " + std::to_string(GetLastError()));
    }
    return {OwnedHandle(read), OwnedHandle(write)};
}

/// A job whose processes end with it.
OwnedHandle MakeJob() {
    OwnedHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

/// Ours where it can be inherited, else nothing.
OwnedHandle InheritedErrors() {
    HANDLE copy = nullptr;
    const HANDLE self = GetCurrentProcess();
    const HANDLE ours = GetStdHandle(STD_ERROR_HANDLE);
    return ours != nullptr && DuplicateHandle(self, ours, self, &copy, 0, TRUE, DUPLICATE_SAME_ACCESS) != FALSE
               ? OwnedHandle(copy)
               : OwnedHandle();
}

}  // namespace

struct PipedProcess::Impl {
    OwnedHandle job;
    OwnedHandle process;
    OwnedHandle input;   // of the process; ours to write
    OwnedHandle output;  // of the process; ours to read

    /// Waits a moment for its end.
    bool HasEnded() const { return WaitForSingleObject(process.Get(), kPollMs) == WAIT_OBJECT_0; }

    /// Hands on what has come; false when there is nothing (yet, or any more).
    bool Take(const std::function<void(std::string_view)>& onOutput) const {
        DWORD waiting = 0;
        if (PeekNamedPipe(output.Get(), nullptr, 0, nullptr, &waiting, nullptr) == FALSE || waiting == 0) {
            return false;
        }
        std::array<char, 4096> buffer;
        DWORD count = 0;
        ReadFile(output.Get(), buffer.data(), std::min(waiting, static_cast<DWORD>(buffer.size())), &count, nullptr);
        onOutput({buffer.data(), count});
        return count > 0;
    }

    /// It and all that it started.
    void End() const {
        constexpr DWORD kPatienceMs = 10'000;
        TerminateJobObject(job.Get(), 1);
        WaitForSingleObject(process.Get(), kPatienceMs);
    }
};

PipedProcess::PipedProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments)
    : m_pImpl(std::make_unique<Impl>()) {
    Pipe input = MakePipe();
    Pipe output = MakePipe();
    const OwnedHandle errors = InheritedErrors();
    m_pImpl->job = MakeJob();
    NewProcess started;
    const DWORD error = StartNewProcess(program, arguments, {}, {input.read.Get(), output.write.Get(), errors.Get()},
                                        CREATE_SUSPENDED, started);
    if (error != ERROR_SUCCESS) {
        throw std::runtime_error("cannot start " + PathText(program) + ": system error " + std::to_string(error));
    }
    // In the job before it does anything.
    AssignProcessToJobObject(m_pImpl->job.Get(), started.process.Get());
    ResumeThread(started.thread.Get());
    m_pImpl->process = std::move(started.process);
    m_pImpl->input = std::move(input.write);
    m_pImpl->output = std::move(output.read);
}

PipedProcess::~PipedProcess() { m_pImpl->End(); }

std::uint32_t PipedProcess::Id() const { return GetProcessId(m_pImpl->process.Get()); }

void PipedProcess::Write(std::string_view text) {
    DWORD written = 0;
    WriteFile(m_pImpl->input.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

ProcessEnd PipedProcess::Run(const std::function<void(std::string_view)>& onOutput, const std::function<bool()>& goOn) {
    bool killed = false;
    while (!m_pImpl->HasEnded()) {
        if (!goOn()) {
            m_pImpl->End();
            killed = true;
            break;
        }
        while (m_pImpl->Take(onOutput)) {
        }
    }
    while (m_pImpl->Take(onOutput)) {
    }
    DWORD exitCode = 0;
    GetExitCodeProcess(m_pImpl->process.Get(), &exitCode);
    m_pImpl->End();  // what it started, too
    return killed ? ProcessEnd{ProcessEnd::Kind::Killed, 0, {}} : EndOf(exitCode);
}
