#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/PipedProcess.h"

/// A value of the environment while the object lives.
class Environment {
 public:
    Environment(const char* name, const std::string& value) : m_name(name) {
        if (const char* const before = std::getenv(name)) {
            m_before = before;
        }
        setenv(name, value.c_str(), 1);
    }
    ~Environment() {
        if (m_before) {
            setenv(m_name, m_before->c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

 private:
    const char* m_name;
    std::optional<std::string> m_before;
};

inline std::filesystem::path CheckPlugin() { return std::filesystem::path(OKO_PROGRAMS) / "oko-check-plugin.so"; }

/// One run of oko-host to its end. `defect`: what is wrong with the plug-in. Unless it is told to meet silent servers
/// it has more patience with its server than a check has time: that one is late on a busy machine only.
struct CheckRun {
    explicit CheckRun(const std::vector<std::string>& arguments, const std::string& defect = {}) {
        const bool meetsSilence = std::ranges::find(arguments, "--reply-timeout") != arguments.end();
        const Environment wrong("OKO_DEFECT", defect);
        const Environment timeout("OKO_CHECK_REPLY_TIMEOUT", meetsSilence ? "250" : "60000");
        PipedProcess process(std::filesystem::path(OKO_PROGRAMS) / "oko-host", arguments);
        exitCode = process.Run([this](std::string_view piece) { output += piece; }, [] { return true; }).exitCode;
    }

    int exitCode = -1;
    std::string output;
};

/// "check PLUGIN" and what else is asked for.
inline std::vector<std::string> CheckArguments(const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"check", CheckPlugin().string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

/// The same, with servers that are silent.
inline std::vector<std::string> CheckArgumentsWithSilence(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = CheckArguments({"--reply-timeout", "250ms"});
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}
