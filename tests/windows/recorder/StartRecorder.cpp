// Stands for an installed server that only writes down how it was started: the show state, in "started.txt" of its
// working directory.

#include <windows.h>

#include <fstream>

int main() {
    STARTUPINFOW startup{};
    GetStartupInfoW(&startup);
    constexpr const char* kUnfinished = "started.part";
    {
        std::ofstream file(kUnfinished);
        file << ((startup.dwFlags & STARTF_USESHOWWINDOW) != 0 ? static_cast<int>(startup.wShowWindow) : -1);
    }
    // Whoever waits for the file finds it whole.
    return MoveFileExA(kUnfinished, "started.txt", MOVEFILE_REPLACE_EXISTING) ? 0 : 1;
}
