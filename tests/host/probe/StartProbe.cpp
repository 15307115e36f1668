// A program that a test starts. With the arguments "tell FILE ..." it writes to FILE what it was given; with
// "linger FILE" it makes FILE and lives, without reading anything, until somebody removes that or ten seconds are over.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#ifdef _WIN32
#include <windows.h>
// Behind it.
#include <shellapi.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> Arguments([[maybe_unused]] int argc, [[maybe_unused]] char** argv) {
#ifdef _WIN32
    int count = 0;
    wchar_t** const texts = CommandLineToArgvW(GetCommandLineW(), &count);
    return {texts + 1, texts + count};
#else
    return {argv + 1, argv + argc};
#endif
}

/// How many files beyond the three usual ones are open.
int OpenFiles() {
    int open = 0;
#ifndef _WIN32
    for (int file = 3; file < 1024; ++file) {
        open += fcntl(file, F_GETFD) >= 0 ? 1 : 0;
    }
#endif
    return open;
}

void Tell(const fs::path& file, const std::vector<fs::path>& arguments) {
    const int open = OpenFiles();
    const std::string input{std::istreambuf_iterator<char>(std::cin), {}};
    const fs::path unfinished = fs::path(file) += ".unfinished";
    {
        std::ofstream out(unfinished, std::ios::binary);
        for (const fs::path& argument : arguments) {
            const std::u8string text = argument.u8string();
            out << "<" << std::string(text.begin(), text.end()) << ">\n";
        }
        out << "input " << input << "\nopen " << open << "\n";
        std::cout << "nobody sees this" << std::endl;
        out << "output " << (std::cout.good() ? "taken" : "refused") << "\n";
    }
    fs::rename(unfinished, file);
}

void Linger(const fs::path& file) {
    std::ofstream(file) << "here";
    for (int i = 0; i < 1000 && fs::exists(file); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    fs::remove(file);
    std::ofstream(fs::path(file) += ".ended") << "over";
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<fs::path> arguments = Arguments(argc, argv);
    if (arguments.size() < 2) {
        return 1;
    }
    if (arguments[0] == "tell") {
        Tell(arguments[1], {arguments.begin() + 2, arguments.end()});
    } else {
        Linger(arguments[1]);
    }
    return 0;
}
