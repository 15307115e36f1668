#pragma once

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// oko-host as a process of its own, with the made-up library, in a folder that goes with the test.
class HostFolder {
 public:
    HostFolder();
    ~HostFolder();
    HostFolder(const HostFolder&) = delete;
    HostFolder& operator=(const HostFolder&) = delete;

    std::filesystem::path Path(const std::string& name) const { return m_folder / name; }

    /// What the made-up device is to do from now on: lines as tests/host/fake/FakeLibrary.cpp takes them. Comes at
    /// once.
    void Tell(const std::string& control) const;

    void Write(const std::string& name, const std::string& text) const;
    std::string Read(const std::string& name) const;

    /// What was called that changes something, a line each.
    std::string Journal() const { return Read("journal"); }

    /// Waits for that text in the journal, behind its first `from` bytes.
    bool HasHeard(const std::string& text, std::size_t from = 0) const;

 private:
    std::filesystem::path m_folder;
};

class HostProcess {
 public:
    /// Starts "oko-host COMMAND --library ... ARGUMENTS" in the folder. Output and errors come together, but for a test
    /// that gives a file for the output.
    HostProcess(const HostFolder& folder, const std::string& command, const std::vector<std::string>& arguments,
                const std::string& outputFile = {});

    /// Kills it if it still runs.
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    /// Waits until it has written this text, or ended. False when it never did.
    bool HasWritten(const std::string& text);

    void Signal(int signal) const;

    /// Waits for its end. The negative signal number when one ended it.
    int ExitCode();

    /// Everything that it wrote, once it ended.
    std::string Output();

 private:
    bool ReadMore();

    int m_process = -1;
    int m_output = -1;
    std::string m_text;
    bool m_bEnded = false;
    int m_nExitCode = 0;
};
