// A whole device whose server says what the fuzzer wants. An input's lines: options (letters), the connection settings
// text, the alarm settings text, the numbers that the host sets, and then one datagram a line:
//   !          the receive fails
//   0=9 12     a reply to whatever was asked: result code 0, its echo, the payload "9 12"
//   +abc       "abc" over and over, 1100 bytes: too long for every buffer
//   <0=9 12    the same reply as without the "<", but as a stray: the next line is the reply itself
// and anything else as it stands, a vertical tab for a line feed. When the lines are used up every command is done.

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include "Channels.h"
#include "RegistryNames.h"
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
constexpr char kNests = 'n';       // the host's callback, the first times, initialises and searches
constexpr char kShortSends = 's';  // the first sends are cut short
constexpr char kTimeOut = 't';     // a wait for a reply ends, and some commands get none
constexpr char kStrays = 'd';      // strays are delivered

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

bool IsTooLongForList(std::string_view reply) {
    return ParseIntegerList(reply, [](int) {}) == ListOutcome::NumberTooLong;
}

bool IsTooLongForStatus(std::string_view reply) {
    return ParseStatus(reply, [](const StatusError&) {}) == StatusOutcome::NumberTooLong;
}

/// The replies that end the process on purpose: a number too long for its buffer. They are kept from the device by the
/// readers' own word, so that whatever else ends the process is a finding.
bool IsFatal(std::string_view command, std::string_view reply) {
    if (StartsWithAny(command, {"listconprod", "comport ", "listdev ", "bl-param-list "})) {
        return IsTooLongForList(reply);
    }
    return command == "status" && IsTooLongForStatus(reply);
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
    FuzzedServer(InputLines lines, ScriptedServer& server, bool answersAll, bool sendsStrays)
        : m_lines(lines), m_server(server), m_bAnswersAll(answersAll), m_bSendsStrays(sendsStrays) {}

    ServerReply operator()(std::string_view command) {
        CheckCommand(command);
        if (m_lines.AtEnd()) {
            // The search for products goes on until it is told to end.
            return command == "findstat" ? "0_findstat_-1\r" : ScriptedServer::BuiltInReply(command);
        }
        if (HasIgnoredReply(command) && !m_bAnswersAll) {
            return ScriptedServer::BuiltInReply(command);
        }
        std::string_view line = m_lines.Next();
        while (m_bSendsStrays && line.starts_with('<')) {
            const ServerReply stray = Datagram(line.substr(1), command);
            if (stray && !MayBeFatal(command, *stray)) {
                m_server.Deliver(*stray);
            }
            line = m_lines.Next();
        }
        ServerReply reply = Datagram(line, command);
        return reply && MayBeFatal(command, *reply) ? kReceiveFails : reply;
    }

 private:
    /// Behind a stray a reply may reach another command than its own.
    bool MayBeFatal(std::string_view command, std::string_view reply) const {
        return m_bSendsStrays ? IsTooLongForList(reply) || IsTooLongForStatus(reply) : IsFatal(command, reply);
    }

    InputLines m_lines;
    ScriptedServer& m_server;
    bool m_bAnswersAll;
    bool m_bSendsStrays;
};

// The host's callback has no argument of its own.
CDevApiInterface_Impl* s_pCalledBack = nullptr;
int s_nests = 0;

void HostCalls(std::int32_t, const wchar_t* line) {
    constexpr std::size_t kLongestLine = 511;
    Require(line == nullptr || std::wstring_view(line).size() <= kLongestLine, "a line of the log is bounded");
    CDevApiInterface_Impl* const device = std::exchange(s_pCalledBack, nullptr);
    if (device == nullptr) {
        return;  // called from what the callback itself called, or never to call
    }
    if (s_nests > 0) {
        --s_nests;
        std::wstring text(oko::kConnectionTextLength, L'\0');
        device->Init(HostCalls, nullptr);
        device->ShowConnection(text.data(), 0, nullptr);
    }
    double value = 0.0;
    TemperatureOf(*device, 0).GetCurrentTemperature(&value);
    s_pCalledBack = device;
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
        return TakeConfiguration(device, [&](int) { return typed; }, true) ? DialogEnd::Ok : DialogEnd::Cancelled;
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

    ScriptedPlatform platform;
    FuzzedServer server(lines, platform.server, has(kAllReplies), has(kStrays));
    platform.server.SetDefault(std::ref(server));  // a handler is copied for every send
    platform.registry.Set(kMiscKey, kLogValue, RegistryValue::Dword(has(kLogs) ? 1 : 0));
    if (has(kTimeOut)) {
        platform.registry.Set(kMiscKey, kTimeoutValue, RegistryValue::Dword(200));
        for (const char* const command : {"checkcon 8", "listdev 12", "readcurval 9", "readsetpoint 7 0 -1"}) {
            platform.server.StaySilent(command);
        }
    }
    if (has(kInstalled)) {
        InstallServer(platform);
    }
    if (has(kShortSends)) {
        platform.server.SendResults({3, 0, -1, 7, 1, 8, -1});
    }
    ScriptDialogs(std::wstring(numberText.begin(), numberText.end()));

    CDevApiInterface_Impl device(oko::kRealDevice);
    s_pCalledBack = has(kCallsBack) || has(kNests) ? &device : nullptr;
    s_nests = has(kNests) ? 3 : 0;
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
