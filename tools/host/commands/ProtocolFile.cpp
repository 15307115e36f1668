#include "commands/ProtocolFile.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <ios>
#include <optional>
#include <string>
#include <system_error>

std::optional<std::string> ReadSmallFile(const std::filesystem::path& file) {
    constexpr std::streamsize kLargest = 1 << 20;
    std::ifstream in(file, std::ios::binary);
    std::string text(static_cast<std::size_t>(kLargest) + 1, '\0');
    in.read(text.data(), kLargest + 1);
    if (!in.is_open() || in.bad() || in.gcount() > kLargest || std::filesystem::is_directory(file)) {
        return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(in.gcount()));
    return text;
}

bool ReplaceFile(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::path unfinished = file;
    unfinished += ".unfinished";
    std::error_code error;
    {
        std::ofstream out(unfinished, std::ios::binary | std::ios::trunc);
        out << text;
        out.close();
        if (!out) {
            std::filesystem::remove(unfinished, error);
            return false;
        }
    }
    std::filesystem::rename(unfinished, file, error);
    return !error;
}

std::filesystem::path ProgressFile(std::filesystem::path protocol) { return protocol += ".progress"; }
