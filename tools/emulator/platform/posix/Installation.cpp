#include "platform/Installation.h"

#include <filesystem>
#include <stdexcept>
#include <string>

namespace emulator {

bool CanInstall() { return false; }

void Install(const std::filesystem::path& /*folder*/, const std::string& /*displayName*/,
             const std::string& /*options*/) {
    throw std::runtime_error("only Windows has a list of installed programs");
}

void Uninstall() {}

std::filesystem::path OptionsFile() { return {}; }

}  // namespace emulator
