#pragma once

/// How this program ends. 100 and above: the command line is wrong.
enum ExitCode {
    kExitDone = 0,
    kExitCheckFailed = 1,     // check: one failed, crashed or hung
    kExitBadTarget = 1,       // no such channel, a sensor, or refused
    kExitNothingChecked = 2,  // check
    kExitClamped = 2,         // --strict: the device took another target than asked
    kExitInitFailed = 3,
    kExitNoLibrary = 4,
    kExitNoLanguage = 5,
    kExitNotKept = 6,  // the settings
    kExitNoScreen = 7,
    kExitNoAnswer = 8,      // a call into the device did not come back; it was ended without Close
    kExitNoPort = 9,        // nobody told the incubator's COM port
    kExitNotWritten = 10,   // a log, a file or the output: full, closed or not to be made
    kExitDataMissing = 11,  // a channel gives no value at the end
    kExitAlarm = 12,        // an alarm stands at the end
    kExitNotSettled = 13,   // --wait: not within the band in time
    kExitInterrupted = 14,  // the second Ctrl+C, or a protocol that was not over
    kExitBadFile = 15,      // a protocol or a log that cannot be read or must not be run
    kExitProblem = 16,      // something must be put right first; it was said what
    kExitNotServed = 17     // the page's port cannot be had
};

/// What each of them means, a line each, for --help.
const char* ExitCodesHelp();
