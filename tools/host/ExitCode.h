#pragma once

/// How this program ends.
enum ExitCode {
    kExitDone = 0,
    kExitBadTarget = 1,
    kExitInitFailed = 3,
    kExitNoLibrary = 4,
    kExitNoLanguage = 5,
    kExitNotKept = 6,
    kExitNoScreen = 7
};
