#include <array>
#include <cstddef>

#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Reading.h"

const char* KindName(ChannelKind kind) {
    switch (kind) {
        case ChannelKind::Temperature:
            return "temperature";
        case ChannelKind::Gas:
            return "gas";
        case ChannelKind::Humidity:
            break;
    }
    return "humidity";
}

const char* UnitOf(ChannelKind kind) {
    return kind == ChannelKind::Temperature ? "\xC2\xB0"
                                              "C"
                                            : "%";
}

const char* EventKindName(EventKind kind) {
    constexpr std::array<const char*, 11> kNames{"started",   "ended",     "target changed", "air mode",
                                                 "link lost", "link back", "alarm on",       "alarm off",
                                                 "log",       "protocol",  "trouble"};
    return kNames[static_cast<std::size_t>(kind)];  // cppcheck-suppress CastIntegerToAddressAtReturn; it is a text
}

const char* StateName(ChannelKind kind, ChannelState state) {
    constexpr std::array<const char*, 6> kNames{"-", "below", "ok", "above", "no value", "no answer"};
    // A zone below its target heats; the others have nothing to tell of what they do about it.
    // cppcheck-suppress CastIntegerToAddressAtReturn; it is a text
    return kind == ChannelKind::Temperature && state == ChannelState::Below ? "heating"
                                                                            : kNames[static_cast<std::size_t>(state)];
}
