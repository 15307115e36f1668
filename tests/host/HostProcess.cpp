#include "HostProcess.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "../Patience.h"

namespace {

std::filesystem::path Programs() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path().parent_path() / "bin";
}

}  // namespace

HostFolder::HostFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "oko-host-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no folder for the test");
    }
    m_folder = name;
}

HostFolder::~HostFolder() { std::filesystem::remove_all(m_folder); }

void HostFolder::Tell(const std::string& control) const {
    Write("control.new", control);
    std::filesystem::rename(Path("control.new"), Path("control"));  // never half of it
}

void HostFolder::Write(const std::string& name, const std::string& text) const { std::ofstream(Path(name)) << text; }

std::string HostFolder::Read(const std::string& name) const {
    std::ifstream file(Path(name));
    return {std::istreambuf_iterator<char>(file), {}};
}

bool HostFolder::HasHeard(const std::string& text, std::size_t from) const {
    return Await([&] { return Journal().find(text, from) != std::string::npos; });
}

HostProcess::HostProcess(const HostFolder& folder, const std::string& command,
                         const std::vector<std::string>& arguments, const std::string& outputFile) {
    const std::string program = Programs() / "oko-host";
    std::vector<std::string> all{program, command};
    if (command != "report") {
        all.insert(all.end(), {"--library", Programs() / "oko-fake-library.so"});
    }
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : all) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    const std::string control = folder.Path("control");
    const std::string journal = folder.Path("journal");
    const std::string place = folder.Path("");

    std::array<int, 2> pipes{};
    if (pipe2(pipes.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for the test");
    }
    m_process = fork();
    if (m_process == 0) {
        setenv("OKO_FAKE_CONTROL", control.c_str(), 1);
        setenv("OKO_FAKE_JOURNAL", journal.c_str(), 1);
        const int output = outputFile.empty() ? pipes[1] : open(outputFile.c_str(), O_WRONLY);
        dup2(output, STDOUT_FILENO);
        dup2(pipes[1], STDERR_FILENO);
        if (chdir(place.c_str()) == 0) {
            execv(argv.front(), argv.data());
        }
        _exit(127);
    }
    close(pipes[1]);
    m_output = pipes[0];
}

HostProcess::~HostProcess() {
    if (!m_bEnded) {
        Signal(SIGKILL);
        ExitCode();
    }
    close(m_output);
}

bool HostProcess::ReadMore() {
    std::array<char, 4096> buffer{};
    const auto count = read(m_output, buffer.data(), buffer.size());
    if (count <= 0) {
        return false;
    }
    m_text.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

bool HostProcess::HasWritten(const std::string& text) {
    while (m_text.find(text) == std::string::npos) {
        if (!ReadMore()) {
            return false;
        }
    }
    return true;
}

void HostProcess::Signal(int signal) const { kill(m_process, signal); }

int HostProcess::ExitCode() {
    while (ReadMore()) {
    }
    if (!m_bEnded) {
        int status = 0;
        waitpid(m_process, &status, 0);
        m_bEnded = true;
        m_nExitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    return m_nExitCode;
}

std::string HostProcess::Output() {
    ExitCode();
    return m_text;
}
