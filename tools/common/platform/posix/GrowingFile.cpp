#include "platform/GrowingFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "text/Text.h"

GrowingFile::GrowingFile(const std::filesystem::path& file, Mode mode)
    : m_file(
          open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | (mode == Mode::Create ? O_CREAT | O_EXCL : 0), 0666)) {
    if (m_file < 0) {
        throw FileError("cannot open " + PathText(file) + ": " + std::generic_category().message(errno));
    }
}

GrowingFile::~GrowingFile() { close(static_cast<int>(m_file)); }

std::size_t GrowingFile::Write(std::string_view bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = write(static_cast<int>(m_file), bytes.data() + written, bytes.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            m_problem = std::generic_category().message(count == 0 ? EIO : errno);
            break;
        }
    }
    return written;
}
