// A program that a test starts. With the arguments "tell FILE ..." it writes to FILE what it was given; with
// "linger FILE" it makes FILE and lives, without reading anything, until somebody removes that or a test's patience is
// over, holds FILE.held meanwhile, and makes FILE.ended at its end; with "spawn FILE" it starts another one that
// lingers, and lives as long. With "talk" it says hello and repeats each line, and ends with exit code 5; with "flood"
// it prints a million characters; with "crash" it dies of the system's signal or status for an access to memory that is
// not there.

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "../../Patience.h"
#include "Hold.h"

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
    const Hold hold(fs::path(file) += ".held");
    std::ofstream(file) << "here";
    Await([&] { return !fs::exists(file); });
    fs::remove(file);
    std::ofstream(fs::path(file) += ".ended") << "over";
}

/// Another one of this program, whose life nobody looks after.
void Spawn(const fs::path& file) {
#ifdef _WIN32
    std::vector<wchar_t> program(32768);
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    std::wstring line = L"\"" + std::wstring(program.data()) + L"\" linger \"" + file.wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process);
#else
    if (fork() == 0) {
        Linger(file);
        _exit(0);
    }
#endif
    std::this_thread::sleep_for(kPatience);
}

int Talk() {
    std::cout << "hello\n" << std::flush;
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << "got " << line << "\n" << std::flush;
        if (line == "end") {
            break;
        }
    }
    return 5;
}

int Flood() {
    const std::string part(1000, 'x');
    for (int i = 0; i < 1000; ++i) {
        std::cout << part;
    }
    return 0;
}

int Crash() {
#ifdef _WIN32
    SetErrorMode(SEM_NOGPFAULTERRORBOX);
    TerminateProcess(GetCurrentProcess(), EXCEPTION_ACCESS_VIOLATION);
#else
    std::signal(SIGSEGV, SIG_DFL);
    std::raise(SIGSEGV);
#endif
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<fs::path> arguments = Arguments(argc, argv);
    const fs::path what = arguments.empty() ? fs::path() : arguments.front();
    if (what == "talk" || what == "flood" || what == "crash") {
        return what == "talk" ? Talk() : what == "flood" ? Flood() : Crash();
    }
    if (arguments.size() < 2) {
        return 1;
    }
    if (arguments[0] == "tell") {
        Tell(arguments[1], {arguments.begin() + 2, arguments.end()});
    } else if (arguments[0] == "spawn") {
        Spawn(arguments[1]);
    } else {
        Linger(arguments[1]);
    }
    return 0;
}
