// oko-host on other systems, for its tests.

#include <string>
#include <vector>

#include "commands/CommandLine.h"

int main(int argc, char** argv) { return RunCommandLine(std::vector<std::string>(argv + 1, argv + argc)); }
