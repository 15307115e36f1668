#pragma once

#include <string>
#include <string_view>

/// What is wrong with this plug-in, as OKO_DEFECT says it: nothing where that is not set.
///
///   SLOT ACTION [N]        from its Nth call on, "GetCurrentTemperature crash":
///       crash, hang, throw, exit     what a program dies of, or never comes back from
///       other                        it does what it should, and tells the opposite
///       skip                         it does nothing and says that all went well
///       off                          it writes a number that is a little wrong
///       spoil                        it writes also where it fails
///       fill                         it writes the same number always
///       chatter                      it asks the server something besides
///       mark                         it writes, or calls, where it must not
///       anew                         it gives another object each time
///       drop                         of "callback": nobody is told
///   send PATTERN; ACTION   "send connect 12 0; drop": drop, twice, or "as TEXT" for another command
///   receive PATTERN; ACTION the reply to such a command, "receive readcurval*; loose":
///       loose (any echo will do), long (the beginning of one that is too long will do), mend (an end is added),
///       ok (its code becomes 0), plain (no marks of errors), filled (an empty one becomes 0), or "as TEXT"
///   stale                  an answer that waits is taken for the next command's
///   leak                   each link and each Init leave something open
///   patient                it waits for ever for a silent server
struct Defect {
    std::string where;    // the slot, or "send", "receive", ...
    std::string pattern;  // of the command
    std::string action;
    std::string text;  // behind "as"
    int from = 1;      // the call
};

const Defect& TheDefect();

/// Does what a slot dies of.
void Suffer(std::string_view slot);

/// "*" stands for any run of characters.
bool FitsCommand(std::string_view command, std::string_view pattern);

/// Says something to the server that nobody asked for.
void Chatter();
