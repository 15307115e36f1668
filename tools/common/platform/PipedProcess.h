#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// How a process ended.
struct ProcessEnd {
    enum class Kind { Exited, Crashed, Killed };  // Killed: by us, because its time was over
    Kind kind = Kind::Exited;
    int exitCode = 0;    // of one that exited
    std::string reason;  // of one that crashed: "SIGSEGV, an access to memory that is not there"
};

/// A program that runs beside this one with both ends of a pipe in our hands: what it writes to its standard output is
/// ours to read, and what we write is on its standard input. It gets nothing else that is open here. It and whatever
/// it started are gone with the object, and with this process.
class PipedProcess {
 public:
    /// Starts the program with these arguments (UTF-8), exactly as they are. What it writes to its standard error goes
    /// where ours goes. Throws std::runtime_error.
    PipedProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments);
    ~PipedProcess();
    PipedProcess(const PipedProcess&) = delete;
    PipedProcess& operator=(const PipedProcess&) = delete;

    /// The system's number of it.
    std::uint32_t Id() const;

    /// Writes to its standard input. What nobody reads any more is dropped.
    void Write(std::string_view text);

    /// Hands out what it writes, piece by piece as it comes, until it has ended, or until `goOn` gives false: that is
    /// asked several times a second, and the process and what it started are then ended.
    ProcessEnd Run(const std::function<void(std::string_view)>& onOutput, const std::function<bool()>& goOn);

 private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};
