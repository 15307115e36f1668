#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "HostProcess.h"

/// One run of oko-host with the made-up library from its start to its end.
struct HostRun {
    /// `arguments` are separated by blanks; `control` steers the library, see fake/FakeLibrary.cpp.
    explicit HostRun(const std::string& arguments, const std::string& control = {}) {
        const HostFolder folder;
        folder.Tell(control);
        folder.Write("output", {});
        std::istringstream stream(arguments);
        std::string command;
        stream >> command;
        std::vector<std::string> words;
        for (std::string word; stream >> word;) {
            words.push_back(word);
        }
        HostProcess process(folder, command, words, folder.Path("output"));
        exitCode = process.ExitCode();
        errors = process.Output();
        output = folder.Read("output");
        journal = folder.Journal();
        made = folder.Read("made");
    }

    int exitCode = -1;
    std::string output;
    std::string errors;
    std::string journal;  // what the library was told to change
    std::string made;     // the file of that name, where the run was told to write one
};
