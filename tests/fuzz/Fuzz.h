#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// What all fuzz targets share. Each target is one file with one LLVMFuzzerTestOneInput; whatever ends the process
/// there is a finding.

/// Ends the run as a finding when a property does not hold.
inline void Require(bool holds, const char* property) noexcept {
    if (!holds) {
        std::fprintf(stderr, "property broken: %s\n", property);
        std::abort();
    }
}

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) noexcept {
    return {reinterpret_cast<const char*>(data), size};
}

/// Gives the fuzzer's bytes line by line, so that its inputs can be read and written by hand.
class InputLines {
 public:
    explicit InputLines(std::string_view input) noexcept : m_rest(input) {}

    bool AtEnd() const noexcept { return m_rest.empty(); }

    /// The next line without its line feed; empty at the end.
    std::string_view Next() noexcept {
        const std::string_view line = m_rest.substr(0, m_rest.find('\n'));
        m_rest.remove_prefix(line.size() < m_rest.size() ? line.size() + 1 : line.size());
        return line;
    }

    /// What no line has taken yet.
    std::string_view Rest() const noexcept { return m_rest; }

 private:
    std::string_view m_rest;
};
