// oko-host on Windows.

#include <windows.h>

#include <string>
#include <vector>

#include "commands/CommandLine.h"
#include "text/Text.h"

namespace {

/// Lets the console read this program's UTF-8 while it runs.
class Utf8Console {
 public:
    Utf8Console() : m_nPreviousCodePage(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
    ~Utf8Console() { SetConsoleOutputCP(m_nPreviousCodePage); }
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

 private:
    UINT m_nPreviousCodePage;
};

}  // namespace

// NOLINTNEXTLINE(misc-use-internal-linkage,readability-identifier-naming): the system's name
int wmain(int argc, wchar_t** argv) {
    const Utf8Console console;
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.push_back(ToUtf8(argv[i]));
    }
    return RunCommandLine(arguments);
}
