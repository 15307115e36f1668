#include "platform/PipedProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/prctl.h>  // PR_SET_PDEATHSIG
#include <sys/prctl.h>
#endif

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/posix/BecomeProgram.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Pipe.h"
#include "text/Text.h"

namespace {

constexpr int kPollMs = 20;
constexpr int kEndPollMs = 1;  // once it has closed its output, which it mostly does by ending

Pipe TakePipe() {
    std::optional<Pipe> pipe = MakePipe();
    if (!pipe) {
        throw std::runtime_error("no pipe to be had: " + std::generic_category().message(errno));
    }
    return std::move(*pipe);
}

struct SignalText {
    int number;
    const char* text;
};

constexpr std::array<SignalText, 7> kSignals{{
    {SIGSEGV, "SIGSEGV, an access to memory that is not there"},
    {SIGBUS, "SIGBUS, an access to memory that is not there"},
    {SIGABRT, "SIGABRT, it gave up"},
    {SIGFPE, "SIGFPE, a division that has no result"},
    {SIGILL, "SIGILL, an instruction that is none"},
    {SIGTRAP, "SIGTRAP, a breakpoint"},
    {SIGKILL, "SIGKILL, somebody ended it"},
}};

std::string SignalName(int number) {
    for (const SignalText& known : kSignals) {
        if (known.number == number) {
            return known.text;
        }
    }
    return "signal " + std::to_string(number);
}

ProcessEnd EndOf(int status) {
    if (WIFSIGNALED(status)) {
        return {ProcessEnd::Kind::Crashed, 0, SignalName(WTERMSIG(status))};
    }
    return {ProcessEnd::Kind::Exited, WEXITSTATUS(status), {}};
}

}  // namespace

struct PipedProcess::Impl {
    Descriptor input;   // of the process; ours to write
    Descriptor output;  // of the process; ours to read
    pid_t process = -1;

    /// Ended, but not forgotten: its number, and its group's, stay its own until somebody asks how it ended.
    bool HasEnded() const {
        siginfo_t info{};
        return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
    }

    /// Ends what is left of its group, and gives how it ended itself.
    int End() {
        kill(-process, SIGKILL);
        int status = 0;
        while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
        process = -1;
        return status;
    }

    /// Hands on what has come; false when there is nothing (yet, or any more).
    bool Take(const std::function<void(std::string_view)>& onOutput) {
        std::array<char, 4096> buffer;
        const ssize_t count = read(output.Get(), buffer.data(), buffer.size());
        if (count > 0) {
            onOutput({buffer.data(), static_cast<std::size_t>(count)});
        }
        return count > 0;
    }
};

PipedProcess::PipedProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments)
    : m_pImpl(std::make_unique<Impl>()) {
    Pipe input = TakePipe();
    Pipe output = TakePipe();
    Pipe problem = TakePipe();
    const ExecArguments all(program.string(), arguments);
    m_pImpl->process = fork();
    if (m_pImpl->process == 0) {
#ifdef __linux__
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // not longer than the thread that started it
#endif
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);  // a crash is told, and needs no file
        BecomeProgram(program.c_str(), all.Get(), ".", {input.read.Get(), output.write.Get(), STDERR_FILENO},
                      problem.write.Get());
    }
    const int failed = m_pImpl->process < 0 ? errno : 0;
    problem.write.Close();
    int error = failed;
    // Closed by exec without a word: it runs.
    if (failed == 0 && read(problem.read.Get(), &error, sizeof error) == static_cast<ssize_t>(sizeof error)) {
        m_pImpl->End();
    }
    if (error != 0) {
        throw std::runtime_error("cannot start " + PathText(program) + ": " + std::generic_category().message(error));
    }
    m_pImpl->input = std::move(input.write);
    m_pImpl->output = std::move(output.read);
    fcntl(m_pImpl->output.Get(), F_SETFL, O_NONBLOCK);
    fcntl(m_pImpl->input.Get(), F_SETFL, O_NONBLOCK);  // one that does not read keeps nobody waiting
}

PipedProcess::~PipedProcess() {
    if (m_pImpl->process > 0) {
        m_pImpl->End();
    }
}

std::uint32_t PipedProcess::Id() const { return static_cast<std::uint32_t>(m_pImpl->process); }

void PipedProcess::Write(std::string_view text) {
    // A reader that is gone is no reason to end: the caller has SIGPIPE ignored or gets it here.
    sigset_t pipe;
    sigset_t before;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    if (write(m_pImpl->input.Get(), text.data(), text.size()) < 0 && errno == EPIPE) {
        constexpr timespec kNow{0, 0};
        sigtimedwait(&pipe, nullptr, &kNow);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ProcessEnd PipedProcess::Run(const std::function<void(std::string_view)>& onOutput, const std::function<bool()>& goOn) {
    bool open = true;
    while (!m_pImpl->HasEnded()) {
        if (!goOn()) {
            m_pImpl->End();
            while (m_pImpl->Take(onOutput)) {
            }
            return {ProcessEnd::Kind::Killed, 0, {}};
        }
        pollfd wanted{open ? m_pImpl->output.Get() : -1, POLLIN, 0};
        poll(&wanted, 1, open ? kPollMs : kEndPollMs);
        if ((wanted.revents & POLLIN) != 0) {
            m_pImpl->Take(onOutput);
        } else if (wanted.revents != 0) {
            open = false;  // it closed its output, and lives
        }
    }
    while (m_pImpl->Take(onOutput)) {
    }
    return EndOf(m_pImpl->End());
}
