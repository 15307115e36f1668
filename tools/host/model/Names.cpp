#include <array>
#include <cstddef>

#include "model/ChannelInfo.h"
#include "model/Event.h"

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
    constexpr std::array<const char*, 10> kNames{"started",   "ended",    "target changed", "air mode", "link lost",
                                                 "link back", "alarm on", "alarm off",      "log",      "trouble"};
    return kNames[static_cast<std::size_t>(kind)];
}
