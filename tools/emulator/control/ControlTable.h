#pragma once

#include <array>
#include <nlohmann/json_fwd.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace emulator {

/// A request that is not understood or cannot be done; the text is for people.
class ControlError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// A member of a request.
struct ControlMember {
    enum class Kind { None, Whole, Number, Word, Rest };  // Rest: all that follows, blanks among it
    std::string_view name;
    Kind kind = Kind::None;
    bool needed = true;
};

/// A request: {"do": NAME, members}, or in words the name and what its members hold, in their order.
struct ControlRequest {
    std::string_view name;
    std::array<ControlMember, 4> members;
    std::string_view example;  // in words
    std::string_view description;
};

using MemberKind = ControlMember::Kind;

inline constexpr std::array<ControlRequest, 15> kControlRequests{{
    {"state", {}, "state", "tells the time, the products with their values, the faults, and how many commands came"},
    {"set",
     {{{"product", MemberKind::Whole},
       {"device", MemberKind::Whole},
       {"what", MemberKind::Word},
       {"to", MemberKind::Rest}}},
     "set 9 0 value 36.5",
     "sets a device's value, target or noise; or its error: an error text, or nothing"},
    {"parameter",
     {{{"product", MemberKind::Whole}, {"number", MemberKind::Whole}, {"to", MemberKind::Rest}}},
     "parameter 9 64 H301-T",
     "sets a parameter to a text"},
    {"status",
     {{{"product", MemberKind::Whole}, {"device", MemberKind::Whole}, {"error", MemberKind::Whole}}},
     "status 9 1 4",
     "reports a device as failing with this number; 0: as well"},
    {"start",
     {{{"fault", MemberKind::Rest}}},
     "start door-open for 30",
     "starts a fault, on the device or a rule on the wire, and gives its number"},
    {"stop",
     {{{"fault", MemberKind::Word}}},
     "stop 1",
     "stops the fault with this number; or \"all\" that were started so"},
    {"faults", {}, "faults", "tells all faults, and how often each was met and fired"},
    {"speed", {{{"to", MemberKind::Number}}}, "speed 60", "lets the incubator's time run so much faster"},
    {"pause", {}, "pause", "lets the incubator's time stand; commands are still answered"},
    {"resume", {}, "resume", "lets it go on"},
    {"step", {{{"seconds", MemberKind::Number}}}, "step 90", "lets so much of it pass at once"},
    {"load",
     {{{"scenario", MemberKind::Rest}}},
     "load product-9",
     "begins anew with a scenario; the faults that were started stay"},
    {"wait",
     {{{"until", MemberKind::Rest}, {"within", MemberKind::Number, false}}},
     "wait value 9 0 36.9 37.1 within 30",
     "answers when it is so, or after so many seconds (10 when left out) that it did not come"},
    {"watch",
     {{{"exchanges", MemberKind::Word}}},
     "watch on",
     "tells every exchange from now on as a line of its own; \"off\" ends it"},
    {"quit", {}, "quit", "ends the emulator"},
}};

/// The request that a line makes: JSON when it begins with "{", else words. Checked: it has a known name, all that the
/// name needs in the right form, and nothing else. Throws ControlError.
nlohmann::json ReadRequest(std::string_view line);

/// The table for people.
std::string ControlHelp();

}  // namespace emulator
