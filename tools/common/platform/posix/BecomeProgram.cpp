#include "platform/posix/BecomeProgram.h"

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <string>
#include <vector>

ExecArguments::ExecArguments(const std::string& file, const std::vector<std::string>& arguments) : m_texts{file} {
    m_texts.insert(m_texts.end(), arguments.begin(), arguments.end());
    m_pointers.reserve(m_texts.size() + 1);
    for (std::string& text : m_texts) {
        m_pointers.push_back(text.data());
    }
    m_pointers.push_back(nullptr);
}

namespace {

/// Closes every file from this number on.
bool CloseFrom(int first) {
#ifdef __linux__
    return close_range(static_cast<unsigned>(first), ~0U, 0) == 0;
#else
    for (int number = getdtablesize() - 1; number >= first; --number) {
        close(number);
    }
    return true;
#endif
}

}  // namespace

void BecomeProgram(const char* file, char* const* arguments, const char* folder, const StandardFiles& files,
                   int problem) {
    constexpr int kProblem = 3;
    setsid();
    // The three first, then the way to tell a problem; the rest is closed.
    if (dup2(files.input, STDIN_FILENO) >= 0 && dup2(files.output, STDOUT_FILENO) >= 0 &&
        dup2(files.errors, STDERR_FILENO) >= 0 && (problem == kProblem || dup2(problem, kProblem) >= 0) &&
        fcntl(kProblem, F_SETFD, FD_CLOEXEC) == 0 && CloseFrom(kProblem + 1) && chdir(folder) == 0) {
        sigset_t none;
        sigemptyset(&none);
        pthread_sigmask(SIG_SETMASK, &none, nullptr);
        for (const int number : {SIGINT, SIGTERM, SIGPIPE, SIGCHLD}) {
            struct sigaction usual{};
            usual.sa_handler = SIG_DFL;
            sigaction(number, &usual, nullptr);
        }
        execv(file, arguments);
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t told = write(kProblem, &error, sizeof error);
    _exit(127);
}
