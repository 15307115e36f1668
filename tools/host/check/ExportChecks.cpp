// The two exports, and what is true of devices before anybody initialises them.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "check/Check.h"
#include "check/Trial.h"
#include "check/Watched.h"
#include "oko/LibQuery.h"
#include "text/Text.h"

namespace check {

namespace {

constexpr std::size_t kRoom = oko::kDeviceTextLength;

/// Buffers of LibQueryPhysDevice, filled with something that no text has, and a little room behind each.
struct TextBuffers {
    TextBuffers() {
        type.fill('#');
        name.fill('#');
        wide.fill(L'#');
        wide2.fill(L'#');
    }

    /// Takes so many characters into each.
    std::int32_t Ask(Trial& trial, std::uint32_t index, std::int32_t size) {
        return trial.Enter(Call(index, size), [&] {
            return trial.QueryPhysDevice()(index, nullptr, type.data(), size, name.data(), size, wide.data(), size,
                                           wide2.data(), size);
        });
    }

    static std::string Call(std::uint32_t index, std::int32_t size) {
        return "LibQueryPhysDevice(" + std::to_string(index) + ", size " + std::to_string(size) + ")";
    }

    bool AreUntouchedFrom(std::size_t begin) const {
        const auto untouched = [begin](const auto& buffer) {
            return std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(begin), buffer.end(),
                               [](auto character) { return character == '#'; });
        };
        return untouched(type) && untouched(name) && untouched(wide) && untouched(wide2);
    }

    std::array<char, kRoom + 4> type;
    std::array<char, kRoom + 4> name;
    std::array<wchar_t, kRoom + 4> wide;
    std::array<wchar_t, kRoom + 4> wide2;
};

/// Up to its terminator, or to the end of the buffer.
template <class Buffer>
auto TextIn(const Buffer& buffer) {
    const auto end = std::find(buffer.begin(), buffer.end(), 0);
    return std::basic_string<typename Buffer::value_type>(buffer.begin(), end);
}

void DeviceTexts(Trial& trial) {
    std::set<std::string> names;
    for (const std::uint32_t index : {oko::kRealDevice, oko::kSimulatorDevice}) {
        TextBuffers texts;
        const std::string call = TextBuffers::Call(index, kRoom);
        ExpectDone(call, texts.Ask(trial, index, kRoom));
        Expect(texts.AreUntouchedFrom(kRoom), call, "that nothing is written behind a buffer", "something there");
        ExpectText(call + ", the type", "Incubator", TextIn(texts.type));
        const std::string name = TextIn(texts.name);
        Expect(!name.empty(), call, "a name", "none");
        ExpectText(call + ", the wide name", name, ToUtf8(TextIn(texts.wide)));
        ExpectText(call + ", the second wide name", name, ToUtf8(TextIn(texts.wide2)));
        Expect(names.insert(name).second, call, "another name than the other device's", "the same");
    }
}

void TextsThatAreCut(Trial& trial) {
    TextBuffers whole;
    whole.Ask(trial, oko::kRealDevice, kRoom);
    constexpr std::int32_t kSmall = 5;
    TextBuffers cut;
    const std::string call = TextBuffers::Call(oko::kRealDevice, kSmall);
    ExpectDone(call, cut.Ask(trial, oko::kRealDevice, kSmall));
    ExpectText(call + ", the type", "Incub", std::string(cut.type.data(), kSmall));
    ExpectText(call + ", the name", std::string(whole.name.data(), kSmall), std::string(cut.name.data(), kSmall));
    ExpectText(call + ", the wide name", ToUtf8(std::wstring_view(whole.wide.data(), kSmall)),
               ToUtf8(std::wstring_view(cut.wide.data(), kSmall)));
    Expect(cut.AreUntouchedFrom(kSmall), call, "that nothing is written behind a buffer", "something there");
}

void RestBecomesZeros(Trial& trial) {
    TextBuffers texts;
    texts.Ask(trial, oko::kSimulatorDevice, kRoom);
    const auto ends = [](const auto& buffer) {
        const auto end = std::find(buffer.begin(), buffer.begin() + kRoom, 0);
        return std::all_of(end, buffer.begin() + kRoom, [](auto character) { return character == 0; });
    };
    Expect(ends(texts.type) && ends(texts.name) && ends(texts.wide) && ends(texts.wide2),
           TextBuffers::Call(oko::kSimulatorDevice, kRoom), "zeros behind each text", "something else");
}

void NullBuffers(Trial& trial) {
    for (const std::uint32_t index : {oko::kRealDevice, oko::kSimulatorDevice}) {
        const std::string call = "LibQueryPhysDevice(" + std::to_string(index) + ", null)";
        ExpectDone(call, trial.Enter(call, [&] {
            return trial.QueryPhysDevice()(index, nullptr, nullptr, kRoom, nullptr, kRoom, nullptr, kRoom, nullptr,
                                           kRoom);
        }));
    }
}

void TextsOfNoDevice(Trial& trial) {
    for (const std::uint32_t index : {2U, 0xFFFF'FFFFU}) {
        TextBuffers texts;
        const std::string call = TextBuffers::Call(index, kRoom);
        ExpectRefused(call, texts.Ask(trial, index, kRoom));
        Expect(texts.AreUntouchedFrom(0), call, "that nothing is written", "something");
    }
}

void SameObject(Trial& trial) {
    const WatchedDevice incubator(trial, oko::kRealDevice);
    const WatchedDevice simulator(trial, oko::kSimulatorDevice);
    const WatchedDevice again(trial, oko::kRealDevice);
    Expect(incubator.Address() == again.Address(), "LibQueryInterface(0)", "the same object each time", "another one");
    Expect(incubator.Address() != simulator.Address(), "LibQueryInterface(1)", "an object of its own",
           "that of device 0");
}

void ObjectOfNoDevice(Trial& trial) {
    for (const std::uint32_t index : {2U, 0xFFFF'FFFFU}) {
        const std::string call = "LibQueryInterface(" + std::to_string(index) + ")";
        auto* const mark = reinterpret_cast<CDevApiInterface*>(&trial);
        CDevApiInterface* device = mark;
        ExpectRefused(call, trial.Enter(call, [&] { return trial.QueryInterface()(index, nullptr, &device); }));
        Expect(device == mark, call, "that the pointer is as it was", "another one");
    }
    const std::string call = "LibQueryInterface(0, null)";
    ExpectRefused(call, trial.Enter(call, [&] { return trial.QueryInterface()(0, nullptr, nullptr); }));
}

void LoadedAgain(Trial& trial) {
    for (int i = 0; i < 3; ++i) {
        const WatchedDevice device(trial, oko::kSimulatorDevice);
        ExpectEqual("GetTemperatureCount", static_cast<std::int32_t>(oko::kTemperatureChannels),
                    device.TemperatureCount());
        trial.Reload();
    }
}

constexpr std::array<Check, 8> kExportChecks{{
    {"export/texts",
     "-",
     Needs::Nothing,
     {},
     DeviceTexts,
     "Each device's type is \"Incubator\", its names are all alike, and not those of the other."},
    {"export/texts-cut",
     "-",
     Needs::Nothing,
     {},
     TextsThatAreCut,
     "A text that fills its buffer is cut, without a terminator, and nothing behind it is touched."},
    {"export/texts-zeros",
     "-",
     Needs::Nothing,
     {},
     RestBecomesZeros,
     "The rest of a buffer that is longer than its text becomes zeros."},
    {"export/texts-null", "-", Needs::Nothing, {}, NullBuffers, "Each buffer may be null."},
    {"export/texts-no-device",
     "-",
     Needs::Nothing,
     {},
     TextsOfNoDevice,
     "Any other index gives -1, and nothing is written."},
    {"export/same-object", "-", Needs::Nothing, {}, SameObject, "There is one object a device, the same each time."},
    {"export/no-device",
     "-",
     Needs::Nothing,
     {},
     ObjectOfNoDevice,
     "Any other index, and a null pointer, give -1, and the pointer stays."},
    {"export/loaded-again",
     "-",
     Needs::Nothing,
     {},
     LoadedAgain,
     "The library can be freed and loaded again, and its devices begin anew."},
}};

}  // namespace

std::span<const Check> ExportChecks() { return kExportChecks; }

}  // namespace check
