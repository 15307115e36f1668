#pragma once

#include <string>
#include <vector>

/// The arguments of a new process as exec takes them: the program's own name first, a null pointer last. Made before
/// the fork, for memory must not be asked for behind it.
class ExecArguments {
 public:
    ExecArguments(const std::string& file, const std::vector<std::string>& arguments);
    ExecArguments(const ExecArguments&) = delete;
    ExecArguments& operator=(const ExecArguments&) = delete;

    /// Stands as long as this object does.
    char* const* Get() const { return m_pointers.data(); }

 private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

/// What a new process has open as its three usual files.
struct StandardFiles {
    int input;
    int output;
    int errors;
};

/// What a new process does between fork and exec: only calls that a child of a process with threads may make. It leads
/// a session of its own, so that Ctrl+C is meant for the caller alone, works in that folder, and has nothing open but
/// the three. Writes errno to `problem`, which exec closes, when the program cannot be had.
[[noreturn]] void BecomeProgram(const char* file, char* const* arguments, const char* folder,
                                const StandardFiles& files, int problem);
