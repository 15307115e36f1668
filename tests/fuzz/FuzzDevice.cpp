// A whole device whose server says what the fuzzer wants. An input's lines: options (letters), the connection settings
// text, the alarm settings text, the numbers that the host sets, and then one datagram a line:
//   !          the receive fails
//   0=9 12     a reply to whatever was asked: result code 0, its echo, the payload "9 12"
//   +abc       "abc" over and over, 1100 bytes: too long for every buffer
// and anything else as it stands, a vertical tab for a line feed. When the lines are used up every command is done.

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include "catalogue/StatusCheck.h"
#include "fakes/Dialogs.h"
#include "fakes/ScriptedPlatform.h"
#include "fuzz/Fuzz.h"
#include "fuzz/HostCalls.h"
#include "link/Reply.h"
#include "oko/LibQuery.h"
#include "ui/ConfigurationFields.h"

namespace {

/// Letters of the first line.
constexpr char kAllReplies = 'a';  // lines also answer the commands whose replies nobody looks at
constexpr char kLogs = 'l';        // the communication log is on
constexpr char kInstalled = 'i';   // a server that does not answer can be started
constexpr char kCallsBack = 'c';   // the host's callback reads a channel
constexpr char kShortSends = 's';  // the first sends are cut short

constexpr std::size_t kTooLong = 1100;

bool StartsWithAny(std::string_view text, std::initializer_list<std::string_view> starts) {
    for (const std::string_view start : starts) {
        if (text.starts_with(start)) {
            return true;
        }
    }
    return false;
}

/// "comport 9 0" asks for the port, "comport 9 0 3" sets it.
bool SetsPort(std::string_view command) {
    return command.starts_with("comport ") && std::count(command.begin(), command.end(), ' ') == 3;
}

bool HasIgnoredReply(std::string_view command) {
    return SetsPort(command) ||
           StartsWithAny(command, {"mode ", "checkcon ", "start ", "find ", "connect ", "alarm ", "bl-param-write "});
}

/// The replies that end the process on purpose: a number too long for its buffer. They are kept from the device by the
/// readers' own word, so that whatever else ends the process is a finding.
bool IsFatal(std::string_view command, std::string_view reply) {
    if (StartsWithAny(command, {"listconprod", "comport ", "listdev ", "bl-param-list "})) {
        return ParseIntegerList(reply, [](int) {}) == ListOutcome::NumberTooLong;
    }
    return command == "status" && ParseStatus(reply, [](const StatusError&) {}) == StatusOutcome::NumberTooLong;
}

std::string Repeat(std::string_view text) {
    std::string repeated;
    while (repeated.size() < kTooLong) {
        repeated.append(text.empty() ? " " : text);
    }
    return repeated;
}

ServerReply Datagram(std::string_view line, std::string_view command) {
    if (line == "!") {
        return kReceiveFails;
    }
    if (line.starts_with('+')) {
        return Repeat(line.substr(1));
    }
    std::string datagram;
    if (line.size() >= 2 && line[1] == '=') {
        datagram.append(line.substr(0, 1)).append("_").append(command).append("_").append(line.substr(2)).append("\r");
    } else {
        datagram = line;
    }
    std::ranges::replace(datagram, '\v', '\n');
    return datagram;
}

/// The server of one run.
class FuzzedServer {
 public:
    FuzzedServer(InputLines lines, bool answersAll) : m_lines(lines), m_bAnswersAll(answersAll) {}

    ServerReply operator()(std::string_view command) {
        CheckCommand(command);
        if (m_lines.AtEnd()) {
            // The search for products goes on until it is told to end.
            return command == "findstat" ? "0_findstat_-1\r" : ScriptedServer::BuiltInReply(command);
        }
        if (HasIgnoredReply(command) && !m_bAnswersAll) {
            return ScriptedServer::BuiltInReply(command);
        }
        ServerReply reply = Datagram(m_lines.Next(), command);
        return reply && IsFatal(command, *reply) ? kReceiveFails : reply;
    }

 private:
    InputLines m_lines;
    bool m_bAnswersAll;
};

// The host's callback has no argument of its own.
CDevApiInterface_Impl* s_pCalledBack = nullptr;

void HostCalls(std::int32_t, const wchar_t* line) {
    constexpr std::size_t kLongestLine = 511;
    Require(line == nullptr || std::wstring_view(line).size() <= kLongestLine, "a line of the log is bounded");
    if (CDevApiInterface_Impl* const device = std::exchange(s_pCalledBack, nullptr)) {
        CDevApiInterface_Temperature* channel = nullptr;
        device->GetTemperature(0, &channel);
        double value = 0.0;
        channel->GetCurrentTemperature(&value);
        s_pCalledBack = device;
    }
}

void InstallServer(ScriptedPlatform& platform) {
    const std::wstring program = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\OKO";
    platform.registry.Set(program, L"DisplayName", RegistryValue::Text(L"OKO-Control Server 2"));
    platform.registry.Set(program, L"InstallLocation", RegistryValue::Text(L"C:\\OKO\\"));
    platform.files.Answer(L"C:\\OKO\\*", {{L"OKO-Control.exe"}});
}

/// What the person does in the two dialogs: the tolerances are typed in, the search is started.
void ScriptDialogs(const std::wstring& typed) {
    ScriptedDialogs::Current().onConfiguration = [typed](CDevApiInterface_Impl& device) {
        DescribeConfiguration(device);
        ReadStatusReport(device);
        return TakeConfiguration(
                   device, [&](int) { return typed; }, true)
                   ? DialogEnd::Ok
                   : DialogEnd::Cancelled;
    };
    ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
}

/// One life of the device in a host's hands, up to Close.
void BringUp(CDevApiInterface_Impl& device, const std::wstring& connection, const std::wstring& alarms,
             HostNumbers& numbers) {
    device.ApplyConnection(connection.c_str());
    device.Init(HostCalls, nullptr);
    CheckCounts(device);
    device.ApplyConfiguration(alarms.c_str());
    UseChannels(device, numbers);
}

void UseDialogs(CDevApiInterface_Impl& device, const std::wstring& connection) {
    std::wstring text(oko::kConfigurationTextLength, L'\0');
    device.ShowConfiguration(text.data(), oko::kConfigurationTextLength, nullptr);
    device.CreateValuePanel(nullptr, nullptr);
    std::wstring connectionText = connection.substr(0, oko::kConnectionTextLength);
    connectionText.resize(oko::kConnectionTextLength);
    device.ShowConnection(connectionText.data(), oko::kConnectionTextLength - 1, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputLines lines(AsText(data, size));
    const std::string_view options = lines.Next();
    const auto has = [&](char option) { return options.find(option) != std::string_view::npos; };
    const std::string_view connectionBytes = lines.Next();
    const std::wstring connection(connectionBytes.begin(), connectionBytes.end());
    const std::string_view alarmBytes = lines.Next();
    const std::wstring alarms(alarmBytes.begin(), alarmBytes.end());
    const std::string_view numberText = lines.Next();
    HostNumbers numbers(numberText);

    FuzzedServer server(lines, has(kAllReplies));
    ScriptedPlatform platform;
    platform.server.SetDefault(std::ref(server));  // a handler is copied for every send
    if (has(kLogs)) {
        platform.registry.Set(L"Software\\Vellmark\\Misc", L"LogCommunication", RegistryValue::Dword(1));
    }
    if (has(kInstalled)) {
        InstallServer(platform);
    }
    if (has(kShortSends)) {
        platform.server.SendResults({3, 0, -1, 7, 1, 8, -1});
    }
    ScriptDialogs(std::wstring(numberText.begin(), numberText.end()));

    CDevApiInterface_Impl device(oko::kRealDevice);
    s_pCalledBack = has(kCallsBack) ? &device : nullptr;
    BringUp(device, connection, alarms, numbers);
    UseDialogs(device, connection);
    device.Close();
    device.Init(HostCalls, nullptr);  // without a link: it must fail, and leave a device that can be used
    BringUp(device, connection, alarms, numbers);
    device.Close();

    Require(platform.server.OpenSockets() == 0, "a closed device has closed its sockets");
    Require(platform.registry.OpenKeys() == 0 && platform.files.OpenSearches() == 0, "no handle stays open");
    ScriptedDialogs::Reset();  // what stays behind looks like a leak, and looking for one takes long
    return 0;
}
