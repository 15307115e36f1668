#pragma once

/// What a new process has open as its three usual files.
struct StandardFiles {
    int input;
    int output;
    int errors;
};

/// What a new process does between fork and exec: only calls that a child of a process with threads may make. It leads
/// a session of its own, so that Ctrl+C is meant for the caller alone, works in that folder, and has nothing
/// open but the three. Writes
/// errno to `problem`, which exec closes, when the program cannot be had.
[[noreturn]] void BecomeProgram(const char* file, char* const* arguments, const char* folder,
                                const StandardFiles& files, int problem);
