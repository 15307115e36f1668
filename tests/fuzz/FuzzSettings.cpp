// The two settings texts that a host stores and hands back.

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>

#include "fuzz/Fuzz.h"
#include "ui/AlarmSettings.h"
#include "ui/ConnectionSettings.h"

namespace {

using Numbers = std::array<double, 8>;

Numbers NumbersOf(const AlarmSettings& settings) {
    return {settings.incubator.below, settings.incubator.above, settings.co2.below,      settings.co2.above,
            settings.o2.below,        settings.o2.above,        settings.humidity.below, settings.humidity.above};
}

AlarmSettings SettingsOf(const Numbers& numbers) {
    return {{numbers[0], numbers[1]}, {numbers[2], numbers[3]}, {numbers[4], numbers[5]}, {numbers[6], numbers[7]}};
}

/// A byte is its character; one from 128 on and the byte after it make one of the others.
std::wstring Widen(std::string_view bytes) {
    std::wstring text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte < 0x80 || i + 1 == bytes.size()) {
            text.push_back(static_cast<wchar_t>(byte));
        } else {
            const auto second = static_cast<unsigned char>(bytes[++i]);
            text.push_back(static_cast<wchar_t>((byte & 0x7F) << 8 | second));
        }
    }
    return text;
}

double AsPrinted(double number) {
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%f", number);
    return std::strtod(text.data(), nullptr);
}

/// Numbers from a host's channels survive the text, but for what six decimals cannot show.
void CheckRoundTrip(const Numbers& numbers) {
    const AlarmSettingsText text = FormatAlarmSettings(SettingsOf(numbers));
    Require(!text.IsCut(), "the text holds eight numbers of any size");
    const Numbers again = NumbersOf(ParseAlarmSettings(text.view()));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        Require(again[i] == AsPrinted(numbers[i]), "a tolerance comes back as it was written");
    }
}

void CheckAlarmText(std::wstring_view text) {
    const Numbers numbers = NumbersOf(ParseAlarmSettings(text));
    for (const double number : numbers) {
        Require(std::isfinite(number), "a tolerance is finite");
    }
    CheckRoundTrip(numbers);
}

void CheckConnectionText(std::wstring_view text) {
    const auto port = ParseConnectionSettings(text).port;
    if (!port) {
        return;
    }
    const ConnectionSettingsText written = FormatConnectionSettings(*port);
    Require(!written.IsCut(), "the text holds any port");
    Require(ParseConnectionSettings(written.view()).port == port, "the port comes back as it was written");
}

/// The first 64 bytes as numbers of any kind; what no host has is replaced.
void CheckAnyNumbers(const std::uint8_t* data) {
    Numbers numbers{};
    std::memcpy(numbers.data(), data, sizeof(numbers));
    for (double& number : numbers) {
        number = std::isfinite(number) ? number : 0.5;
    }
    CheckRoundTrip(numbers);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = Widen(AsText(data, size));
    CheckAlarmText(text);
    CheckConnectionText(text);
    if (size >= sizeof(Numbers)) {
        CheckAnyNumbers(data);
    }
    return 0;
}
