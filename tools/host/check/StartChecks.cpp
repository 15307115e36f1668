// Init: what it sends, what becomes of the replies, and when it fails.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "check/Check.h"
#include "check/Incubator.h"
#include "check/Trial.h"
#include "check/Watched.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "text/Words.h"

namespace check {

namespace {

constexpr int kFirstProduct = 7;
constexpr int kLastProduct = 17;

/// The incubator with an open link, and rules from its first command on.
WatchedDevice Connect(Trial& trial, const std::vector<std::string>& rules) {
    const WatchedDevice device(trial, oko::kRealDevice);
    trial.Rules(rules);
    ExpectDone("ApplyConnection", device.ApplyConnection(L"m_iComPort 3"));
    trial.AtEnd([device] { device.Close(); });
    return device;
}

std::size_t CountOf(const std::vector<std::string>& commands, std::string_view begin) {
    return static_cast<std::size_t>(
        std::ranges::count_if(commands, [&](const std::string& command) { return command.starts_with(begin); }));
}

std::string ChannelNames(const WatchedDevice& device) {
    std::vector<std::string> names;
    for (const WatchedChannel& channel : device.Channels()) {
        names.push_back(InQuotes(channel.Name()));
    }
    return JoinWords(names, "and");
}

constexpr std::string_view kUsualNames = R"("H301-T", "Base", "Room", "Humidifier", "CO2", "O2" and "H301-HM-ACTIVE")";

/// The usual channels, with the usual values.
void ExpectTheIncubator(const WatchedDevice& device) {
    ExpectText("the live channels", std::string(kUsualNames), ChannelNames(device));
    for (const auto& [channel, value] :
         {std::pair(device.Temperature(0), incubator::kZone), std::pair(device.Temperature(1), incubator::kBase),
          std::pair(device.Gas(0), incubator::kCo2), std::pair(device.Gas(1), incubator::kO2),
          std::pair(device.Humidity(0), incubator::kHumidity)}) {
        const CheckedRead read = channel.Current();
        Expect(read.result == oko::kSuccess && read.value == value, channel.CurrentName(),
               "0 and " + std::to_string(value), ReadText(read));
    }
}

void Commands(Trial& trial) {
    const WatchedDevice device = Connect(trial, {});
    ExpectDone("Init", device.Init());
    std::vector<std::string> expected{"listprod"};
    const auto add = [&](const std::string& begin, const std::string& end) {
        for (int product = kFirstProduct; product <= kLastProduct; ++product) {
            expected.push_back(std::string(begin).append(std::to_string(product)).append(end));
        }
    };
    add("mode ", " 0");
    add("comport ", " 0 3");
    expected.insert(expected.end(), {"comport 12 1 3", "comport 13 1 3"});
    add("checkcon ", "");
    expected.insert(expected.end(), {"listconprod", "comport 9 0", "listdev 9", "bl-param-list 9", "listdev 12",
                                     "bl-param-list 12", "listdev 15", "bl-param-list 15", "start 1", "status"});
    std::vector<std::string> got = trial.Commands();
    got.resize(std::min(got.size(), expected.size()));
    ExpectCommands("Init", expected, got);
}

void NoTargetsSent(Trial& trial) {
    const WatchedDevice device = Connect(trial, {});
    ExpectDone("Init", device.Init());
    const std::vector<std::string> commands = trial.Commands();
    ExpectEqual("targets that Init sends", std::size_t{0}, CountOf(commands, "writesetpoint"));
    ExpectEqual("parameters that Init writes", std::size_t{0}, CountOf(commands, "bl-param-write"));
    ExpectEqual("alarms that Init sends", std::size_t{0}, CountOf(commands, "alarm"));
}

void Callback(Trial& trial) {
    const WatchedDevice device = Connect(trial, {});
    ExpectDone("Init", device.Init());
    const HostCalls calls = Trial::TakeHostCalls();
    Expect(calls.problem.empty(), "the callback", "code 1000 with a line or 1001 without a text, on the calling thread",
           calls.problem);
    Expect(!calls.lines.empty(), "the callback", "a line about Init", "none");
}

void WithoutCallback(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"listprod; always; code 1"});  // of which a line would tell
    ExpectDone("Init(null)", device.InitWithoutCallback());
    ExpectTheIncubator(device);
}

CDevApiInterface* g_pDeviceOfCallback = nullptr;
std::int32_t g_nInnerInit = 0;

void InitFromCallback(std::int32_t, const wchar_t*) {
    if (g_pDeviceOfCallback != nullptr) {
        CDevApiInterface* const device = g_pDeviceOfCallback;
        g_pDeviceOfCallback = nullptr;
        g_nInnerInit = device->Init(nullptr, nullptr);
    }
}

void InitInInit(Trial& trial) {
    const WatchedDevice device = Connect(trial, {});
    auto* const object = static_cast<CDevApiInterface*>(device.Address());
    g_pDeviceOfCallback = object;
    ExpectDone("Init", trial.Enter("Init", [&] { return object->Init(InitFromCallback, nullptr); }));
    Expect(g_pDeviceOfCallback == nullptr, "the callback", "a call during Init", "none");
    ExpectRefused("Init from the callback of Init", g_nInnerInit);
    ExpectEqual("how often Init asked for the products", std::size_t{1}, CountOf(trial.Commands(), "listprod"));
}

void Refused(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"listprod; always; code 3"});
    ExpectRefused("Init that is refused", device.Init());
    ExpectCommands("Init that is refused", {"listprod"}, trial.Commands());
    ExpectEqual("GetTemperatureCount after it", 0, device.TemperatureCount());
    ExpectEqual("GetGasConcentrationCount after it", 0, device.GasCount());
    ExpectEqual("GetHumidifierCount after it", 0, device.HumidityCount());
    ExpectDone("GetCurrentTemperature(0) after it", device.Temperature(0).Current().result);
    ExpectDone("GetCurrentGasConcentration(0) after it", device.Gas(0).Current().result);
    ExpectCommands("reads after it, from memory", {}, trial.Commands());
    trial.Rules({});
    ExpectDone("Init once the server is willing", device.Init());
    ExpectTheIncubator(device);
}

void NoAnswer(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"listprod; always; empty"});
    ExpectRefused("Init without an answer", device.Init());
    ExpectEqual("GetTemperatureCount after it", 0, device.TemperatureCount());
    const std::vector<std::string> commands = trial.Commands();
    ExpectEqual("other commands than \"listprod\"", std::size_t{0}, commands.size() - CountOf(commands, "listprod"));
    trial.Rules({});
    ExpectDone("Init once there is one", device.Init());
    ExpectTheIncubator(device);
}

void LoggedCodes(Trial& trial) {
    for (const char* const code : {"1", "2"}) {
        const WatchedDevice device = Connect(trial, {std::string("listprod; always; code ") + code});
        ExpectDone("Init", device.Init());
        const HostCalls calls = Trial::TakeHostCalls();
        const std::string_view begin = code[0] == '1' ? "CDevApiInterface_Impl::Init Some problems within OC"
                                                      : "CDevApiInterface_Impl::Init There is a problem";
        Expect(std::ranges::any_of(calls.lines, [&](const std::string& line) { return line.starts_with(begin); }),
               std::string("Init with code ") + code, "a line about it", "none");
        ExpectTheIncubator(device);
    }
}

void AskedAgain(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"listconprod; nth 1; code 1"});
    ExpectDone("Init", device.Init());
    ExpectEqual("how often \"listconprod\" was sent", std::size_t{2}, CountOf(trial.Commands(), "listconprod"));
    ExpectTheIncubator(device);
}

void NoProducts(Trial& trial) {
    for (const char* const effect : {"value", "empty", "no-separator", "truncate 4"}) {
        const WatchedDevice device = Connect(trial, {std::string("listconprod; always; ") + effect});
        const std::string when = std::string(" under \"") + effect + "\"";
        ExpectDone("Init" + when, device.Init());
        ExpectEqual("GetTemperatureCount" + when, 0, device.TemperatureCount());
        ExpectEqual("GetGasConcentrationCount" + when, 0, device.GasCount());
        ExpectEqual("GetHumidifierCount" + when, 0, device.HumidityCount());
    }
}

void DefaultLimits(Trial& trial) {
    for (const char* const effect : {"error none", "value nan", "empty", "no-separator"}) {
        const std::string rule = std::string("; always; ") + effect;
        const WatchedDevice device = Connect(trial, {"readmin*" + rule, "readmax*" + rule});
        ExpectDone("Init", device.Init());
        double low = -1.0;
        double high = -1.0;
        const std::string call = "GetTemperatureLimits(0)";
        auto* const zone = device.Temperature(0).AsTemperature();
        ExpectDone(call, trial.Enter(call, [&] { return zone->GetTemperatureLimits(&low, &high); }));
        Expect(low == 0.0 && high == 60.0, call + " under \"" + effect + "\"", "0 and 60",
               std::to_string(low) + " and " + std::to_string(high));
    }
}

/// Replies of the set-up commands, of which nothing is taken.
void RepliesThatDoNotCount(Trial& trial) {
    for (const char* const effect :
         {"code 3", "error no", "empty", "long 300", "truncate 3", "garbage 40", "no-separator", "no-return"}) {
        const std::string rule = std::string("; always; ") + effect;
        const WatchedDevice device =
            Connect(trial, {"mode*" + rule, "comport * 0 3" + rule, "checkcon*" + rule, "start 1" + rule});
        ExpectDone(std::string("Init under \"") + effect + "\"", device.Init());
        ExpectTheIncubator(device);
    }
}

void RepliesTwice(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"*; always; twice"});
    ExpectDone("Init", device.Init());
    ExpectTheIncubator(device);
}

void RepliesLate(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"*; every 3; late 10"});
    ExpectDone("Init", device.Init());
    ExpectTheIncubator(device);
}

void SilentForOne(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"checkcon 12; always; silent"});
    ExpectRefused("Init without an answer to one command", device.Init());
    ExpectEqual("GetTemperatureCount after it", 0, device.TemperatureCount());
    trial.Rules({});
    ExpectDone("Init once the server answers", device.Init());
    ExpectTheIncubator(device);
}

void SilentForAll(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"listprod; always; silent"});
    ExpectRefused("Init of a silent server", device.Init());
    ExpectEqual("GetTemperatureCount after it", 0, device.TemperatureCount());
    trial.Rules({});
    ExpectDone("Init once the server answers", device.Init());
    ExpectTheIncubator(device);
}

/// The rule's last number is cut off from the triple by the blank before it.
void FailingProduct(Trial& trial) {
    const WatchedDevice device = Connect(trial, {"status; always; value 9 0 4 0"});
    ExpectDone("Init", device.Init());
    ExpectText("the live channels", R"("Humidifier", "CO2", "O2" and "H301-HM-ACTIVE")", ChannelNames(device));
    const HostCalls calls = Trial::TakeHostCalls();
    Expect(std::ranges::find(calls.lines, "OKO-Lab bold line status error: product 9, device 0, error: 4") !=
               calls.lines.end(),
           "the callback", "a line about the device that fails", "none");
}

void AbsentSensor(Trial& trial) {
    for (const char* const effect : {"value 0.0", "error no sensor", "value nan", "empty", "code 3"}) {
        const WatchedDevice device = Connect(trial, {std::string("bl-param-read 9 132; always; ") + effect});
        ExpectDone("Init", device.Init());
        ExpectText(std::string("the live channels under \"") + effect + "\"",
                   R"("H301-T", "Base", "Humidifier", "CO2", "O2" and "H301-HM-ACTIVE")", ChannelNames(device));
    }
}

struct Product {
    const char* scenario;
    const char* names;
};

constexpr std::array<Product, 11> kProducts{{
    {"product-7", R"("H501-T Base", "H501-T Lid", "Humidity", "Objective" and "Free sensor")"},
    {"product-8", R"("H201-T", "Air heater", "Cage" and "Sample")"},
    {"product-9", R"("H301-T", "Base", "Free sensor", "Humidity #1", "Humidity #2", "Lid", "Objective" and "Room")"},
    {"product-10", R"("Humidifier", "Sensing cell" and "CO2")"},
    {"product-11", R"("O2")"},
    {"product-12", R"("Humidifier", "Sensing cell", "CO2" and "O2")"},
    {"product-13", R"("Humidifier", "Sensing cell", "CO2" and "O2")"},
    {"product-14", R"("H101-T", "Base", "Free sensor", "Objective", "Room" and "Water bath")"},
    {"product-15", R"("Humidifier", "Sensing cell" and "H301-HM-ACTIVE")"},
    {"product-16", R"("H401-T Device 1", "H401-T Device 2" and "")"},
    {"product-17", R"("Main", "Chamber", "Lid", "Humidifier", "Objective Heater", "Heated tube" and "T sensor")"},
}};

void Products(Trial& trial) {
    for (const Product& product : kProducts) {
        trial.Scenario(product.scenario);
        const WatchedDevice device(trial, oko::kRealDevice);
        ExpectDone("ApplyConnection", device.ApplyConnection(L"m_iComPort 3"));
        ExpectDone("Init", device.Init());
        ExpectText(std::string("the live channels of ") + product.scenario, product.names, ChannelNames(device));
        for (const WatchedChannel& channel : device.Channels()) {
            const CheckedRead read = channel.Current();
            Expect(read.result == oko::kSuccess && read.value, channel.CurrentName() + " of " + product.scenario,
                   "0 and a number", ReadText(read));
        }
        device.Close();
        trial.Reload();  // one product set a life of the library, as on a desk
    }
}

constexpr std::array<Check, 20> kStartChecks{{
    {"init/commands",
     "incubator",
     Needs::Nothing,
     {},
     Commands,
     "Init asks for the server, sends modes, ports and checks to products 7 to 17, reads what is connected, starts "
     "it."},
    {"init/changes-nothing",
     "incubator",
     Needs::Nothing,
     {},
     NoTargetsSent,
     "Init sends no target, parameter or alarm."},
    {"init/callback",
     "incubator",
     Needs::Nothing,
     {},
     Callback,
     "The callback gets lines, on the thread that called, and nothing else."},
    {"init/no-callback", "incubator", Needs::Nothing, {}, WithoutCallback, "The callback may be null."},
    {"init/in-init",
     "incubator",
     Needs::Nothing,
     {},
     InitInInit,
     "An Init from the callback of Init is refused and does nothing."},
    {"init/refused",
     "incubator",
     Needs::Nothing,
     {},
     Refused,
     "A server that refuses makes Init fail: no channels, reads from memory, and the next Init counts.",
     true},
    {"init/no-answer",
     "incubator",
     Needs::NoServer,
     {},
     NoAnswer,
     "Without an answer Init fails, and may be repeated.",
     true},
    {"init/silent",
     "incubator",
     Needs::ReplyTimeout,
     {},
     SilentForOne,
     "A command that is not answered within the ReplyTimeout makes Init fail, and it may be tried again."},
    {"init/silent-server",
     "incubator",
     Needs::ReplyTimeout,
     {},
     SilentForAll,
     "A silent server makes Init fail once the ReplyTimeout has passed, and may be tried again.",
     true},
    {"init/codes-1-2",
     "incubator",
     Needs::Nothing,
     {},
     LoggedCodes,
     "Result codes 1 and 2 are logged, and Init goes on."},
    {"init/asked-again",
     "incubator",
     Needs::Nothing,
     {},
     AskedAgain,
     "A list of products with code 1 is asked for again, a second later."},
    {"init/no-products",
     "incubator",
     Needs::Nothing,
     {},
     NoProducts,
     "A server without products, or whose list cannot be read, gives no channels, and the result is 0."},
    {"init/default-limits",
     "incubator",
     Needs::Nothing,
     {},
     DefaultLimits,
     "Limits that the server does not tell are 0 and 60."},
    {"init/replies-that-do-not-count",
     "incubator",
     Needs::Nothing,
     {},
     RepliesThatDoNotCount,
     "Nothing is taken of the replies to modes, ports, checks and start, whatever they are."},
    {"init/twice",
     "incubator",
     Needs::Nothing,
     {},
     RepliesTwice,
     "When every reply comes twice, each is still taken for its own command alone."},
    {"init/late", "incubator", Needs::Nothing, {}, RepliesLate, "Replies that take their time are waited for."},
    {"init/failing-product",
     "incubator",
     Needs::Nothing,
     {},
     FailingProduct,
     "A product whose last device fails is told of and has no channels."},
    {"init/absent-sensor",
     "incubator",
     Needs::Nothing,
     {},
     AbsentSensor,
     "A sensor whose value is 0, an error, or missing is no channel."},
    {"init/products", "incubator", Needs::Nothing, {}, Products, "Each product gives its channels, by their names."},
    {"init/start-over",
     "incubator",
     Needs::Nothing,
     {},
     [](Trial& trial) {
         const WatchedDevice device = Connect(trial, {});
         ExpectDone("Init", device.Init());
         trial.Scenario("product-8");
         ExpectDone("Init", device.Init());
         ExpectText("the live channels", R"("H201-T", "Air heater", "Cage" and "Sample")", ChannelNames(device));
     },
     "An Init without Close finds what was plugged in since."},
}};

}  // namespace

std::span<const Check> StartChecks() { return kStartChecks; }

}  // namespace check
