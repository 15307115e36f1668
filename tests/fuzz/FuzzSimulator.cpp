// The simulator: any command, any channels and any stored list of products, and a device on top of it. An input's
// lines: the command, the stored list, the numbers that the host sets; the rest are the channels.

#include <algorithm>
#include <array>
#include <string>

#include "RegistryNames.h"
#include "fakes/ScriptedPlatform.h"
#include "fuzz/Fuzz.h"
#include "fuzz/HostCalls.h"
#include "link/Simulator.h"
#include "oko/LibQuery.h"

namespace {

/// The last characters of a reply that fits.
constexpr std::string_view kEnd = "\r";

void FillView(ChannelView& view, InputLines& lines) {
    const std::string_view line = lines.Next();
    constexpr std::array kValues{0.0, 37.0, 19.9996, 0.0005, -0.0004, 1e15, 1.7e308, -1.7e308, 5e-324};
    const auto byteAt = [&](std::size_t i) { return i < line.size() ? static_cast<unsigned char>(line[i]) : 0U; };
    view = {!line.empty(),
            {static_cast<std::int32_t>(byteAt(0) % 32), static_cast<std::int32_t>(byteAt(1))},
            kValues[byteAt(2) % kValues.size()],
            kValues[byteAt(3) % kValues.size()]};
}

ChannelViews ReadViews(InputLines lines) {
    ChannelViews views;
    for (ChannelView& view : views.temperatures) {
        FillView(view, lines);
    }
    for (ChannelView& view : views.gasConcentrations) {
        FillView(view, lines);
    }
    for (ChannelView& view : views.humidifiers) {
        FillView(view, lines);
    }
    return views;
}

void CheckReply(const SimulatorState& state, std::string_view command) {
    const SimulatorText reply = SimulatorReply(state, command);
    Require(reply.length() <= kListReplySize, "a simulated reply fits the longest buffer");
    Require(reply.IsCut() || reply.view().ends_with(kEnd), "a simulated reply ends in a carriage return");
    const bool isEcho = reply.view().starts_with("0_") &&
                        (reply.IsCut() || reply.view().substr(2).starts_with(command.substr(0, command.find('\0'))));
    Require(isEcho || command.starts_with("list"), "an answer echoes its command");
}

/// The reply to any command in a caller's buffer.
void CheckSend(CDevApiInterface_Impl& device, const std::string& command, int capacity) {
    Reply reply(capacity);
    device.CommandSend(command.c_str(), static_cast<int>(command.size()), reply.data(), reply.capacity(),
                       &reply.m_nLength);
    Require(reply.m_nLength >= 1 && reply.m_nLength <= capacity, "the simulator always answers");
    Require(reply.c_str()[reply.m_nLength] == '\0', "a simulated reply ends in a zero");
}

void CheckDevice(const std::string& command, std::string_view list, HostNumbers& numbers) {
    ScriptedPlatform platform;
    platform.threads.failStart = true;  // the values' own thread is the stress program's matter
    platform.registry.Set(kSimulatorsKey, kSimulatorAnswerValue,
                          RegistryValue::Text(std::wstring(list.begin(), list.end())));
    CDevApiInterface_Impl device(oko::kSimulatorDevice);
    device.LoadSimulatorAnswer();
    CheckSend(device, command, kReplySize);
    CheckSend(device, command, kListReplySize);

    // The same bytes that the catalogue will read. A number that is too long ends the process there, as it should.
    const std::string stored = device.m_szSimListconprod.data() + std::string(kEnd);
    if (ParseIntegerList(stored, [](int) {}) == ListOutcome::NumberTooLong) {
        return;
    }
    Require(device.Init(nullptr, nullptr) == oko::kSuccess, "the simulator can always be initialised");
    UseChannels(device, numbers);
    device.ApplyConfiguration(L"");
    ReadStatusReport(device);
    UseChannels(device, numbers);
    CheckSend(device, command, kReplySize);
    device.Close();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputLines lines(AsText(data, size));
    const std::string_view command = lines.Next();
    const std::string_view list = lines.Next();
    HostNumbers numbers(lines.Next());
    CheckReply({ReadViews(lines), list, size % 2 == 1}, command);
    CheckDevice(std::string(command.substr(0, command.find('\0'))), list, numbers);
    return 0;
}
