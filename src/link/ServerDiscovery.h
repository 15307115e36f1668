#pragma once

#include <array>
#include <cstddef>

/// Where the OKO-Control Server is installed on this computer.

inline constexpr std::size_t kFolderLength = 260;
inline constexpr std::size_t kExecutableLength = 256;
using FolderText = std::array<wchar_t, kFolderLength>;
using ExecutableText = std::array<wchar_t, kExecutableLength>;

/// Looks the server up among the installed programs. `folder` may be null; else it receives the installation folder as
/// the registry has it, ending in a zero. False when the server is not installed.
bool FindServerInstallLocation(FolderText* folder) noexcept;

/// Looks for the server's program in its folder and puts the bare file name, ending in a zero, into `name`. The last
/// character of `folder` is taken for its separator: one that is none is replaced, not followed, by a "\". Registry
/// install locations end with a separator. False when there is no such program.
bool FindServerExecutable(const wchar_t* folder, ExecutableText& name) noexcept;
