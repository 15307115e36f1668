#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <optional>

#include "platform/posix/Descriptor.h"

struct Pipe {
    Descriptor read;
    Descriptor write;
};

/// A pipe that exec closes; nothing, and errno, where none is to be had. The Mac cannot make one with its flags set: a
/// process that another thread starts in between would get it, but for BecomeProgram, which closes what it does not
/// know.
inline std::optional<Pipe> MakePipe() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return std::nullopt;
    }
    Pipe made{Descriptor(ends[0]), Descriptor(ends[1])};
    if (fcntl(ends[0], F_SETFD, FD_CLOEXEC) != 0 || fcntl(ends[1], F_SETFD, FD_CLOEXEC) != 0) {
        return std::nullopt;
    }
    return made;
}
