#include "platform/StartProgram.h"

#include <fcntl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/posix/BecomeProgram.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Pipe.h"
#include "text/Text.h"

namespace {

/// The program's file; empty where there is none.
std::filesystem::path FindProgram(const std::filesystem::path& program) {
    if (program.has_parent_path()) {
        return program;
    }
    const char* const folders = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe): nothing here changes it
    std::string_view left = folders == nullptr ? "" : folders;
    while (!left.empty()) {
        const std::size_t end = std::min(left.find(':'), left.size());
        const std::filesystem::path file = std::filesystem::path(left.substr(0, end)) / program;
        if (access(file.c_str(), X_OK) == 0) {
            return file;
        }
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return {};
}

/// Through a process that ends at once: the program becomes an orphan, and its end leaves no zombie here.
int Start(const char* file, char* const* arguments, const char* folder, int input, int nowhere) {
    std::optional<Pipe> pipe = MakePipe();
    if (!pipe) {
        return errno;
    }
    auto& [read, write] = *pipe;
    const pid_t middle = fork();
    if (middle < 0) {
        return errno;
    }
    if (middle == 0) {
        const pid_t child = fork();
        if (child == 0) {
            BecomeProgram(file, arguments, folder, {input, nowhere, nowhere}, write.Get());
        }
        _exit(child < 0 ? errno : 0);
    }
    write.Close();
    int status = 0;
    while (waitpid(middle, &status, 0) < 0 && errno == EINTR) {
    }
    int error = 0;
    // Closed by exec without a word: it runs.
    if (::read(read.Get(), &error, sizeof error) == static_cast<ssize_t>(sizeof error)) {
        return error;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : ECHILD;
}

}  // namespace

std::string StartProgramIn(const std::filesystem::path& folder, const std::filesystem::path& program,
                           const std::vector<std::string>& arguments, std::string_view input) {
    const std::string cannot = "cannot start " + PathText(program) + ": ";
    const auto reason = [&](int error) { return cannot + std::generic_category().message(error); };
    if (input.size() > kLongestInput) {
        return cannot + "the text for it is too long";
    }
    std::filesystem::path file = FindProgram(program);
    if (file.empty()) {
        return cannot + "no folder of PATH has it; write where it is";
    }
    if (!folder.empty()) {
        file = std::filesystem::absolute(file);  // it is started from there
    }
    std::optional<Pipe> pipe = MakePipe();
    if (!pipe) {
        return reason(errno);
    }
    auto& [read, write] = *pipe;
    // Before there is a reader: the pipe holds it all, so nobody has to wait for one.
    fcntl(write.Get(), F_SETFL, O_NONBLOCK);
    if (!input.empty() && ::write(write.Get(), input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
        return reason(errno);
    }
    write.Close();
    const Descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
    const ExecArguments all(file.string(), arguments);
    const int error = Start(file.c_str(), all.Get(), folder.empty() ? "." : folder.c_str(), read.Get(), nowhere.Get());
    return error == 0 ? "" : reason(error);
}
