#include "ExitCode.h"

const char* ExitCodesHelp() {
    return "Exit codes:\n"
           "  0 done               4 no such library               8 no answer      12 an alarm stands\n"
           "  1 no such target     5 no such language here         9 no COM port    13 not settled in time\n"
           "  2 target changed     6 the settings cannot be kept  10 not written    14 ended before it was done\n"
           "  3 not initialised    7 there is no screen           11 data missing   15 a file is not as it must be\n"
           "  16 a problem to put right    17 the page cannot be served\n"
           "  check has meanings of its own for 1 (one failed) and 2 (nothing was checked).\n"
           "  100 and above: the command line is wrong.";
}
