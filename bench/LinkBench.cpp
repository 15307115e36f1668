// The library's real device against a responder in this process, held against bare exchanges of the same bytes.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "Library.h"
#include "Pairs.h"
#include "Responder.h"
#include "Row.h"
#include "oko/LibQuery.h"

namespace {

constexpr std::size_t kReads = 400;  // in a block
constexpr std::size_t kInits = 8;    // in a block

/// The registry value that switches the communication log on; the next Init reads it.
class LogSwitch {
 public:
    LogSwitch() {
        Require(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark\\Misc", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                &m_key, nullptr) == ERROR_SUCCESS,
                "the registry cannot be written");
    }
    ~LogSwitch() {
        RegDeleteValueW(m_key, kName);
        RegCloseKey(m_key);
    }
    LogSwitch(const LogSwitch&) = delete;
    LogSwitch& operator=(const LogSwitch&) = delete;

    void Set(DWORD on) { RegSetValueExW(m_key, kName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&on), sizeof on); }

 private:
    static constexpr const wchar_t* kName = L"LogCommunication";
    HKEY m_key = nullptr;
};

int g_logLines = 0;

void CountLines(std::int32_t code, const wchar_t*) { g_logLines += code == oko::kCallbackLog ? 1 : 0; }

/// The real device, initialised as long as this object lives.
class Incubator {
 public:
    explicit Incubator(const Library& library) {
        const auto query = library.Find<oko::LibQueryInterfaceFunction>("LibQueryInterface");
        Require(query != nullptr && query(oko::kRealDevice, nullptr, &m_pDevice) == 0, "there is no real device");
        Initialise();
        Require(m_pDevice->GetTemperatureCount() > 0, "there is no temperature channel");
        m_pDevice->GetTemperature(0, &m_pChannel);
    }
    ~Incubator() { m_pDevice->Close(); }
    Incubator(const Incubator&) = delete;
    Incubator& operator=(const Incubator&) = delete;

    /// Closes the device and brings it up again. Returns Init's own seconds.
    double Restart() {
        m_pDevice->Close();
        return Initialise();
    }

    /// Returns the seconds of a block of reads.
    double ReadTemperatures() {
        return Block(kReads, [&] {
            double value = 0.0;
            std::int32_t result = oko::kFailure;
            const double seconds = Seconds([&] { result = m_pChannel->GetCurrentTemperature(&value); });
            Require(result == oko::kSuccess && value == 36.512, "a channel read failed");
            return seconds;
        });
    }

 private:
    double Initialise() {
        m_pDevice->ApplyConnection(L"m_iComPort 3");
        return Seconds([&] { Require(m_pDevice->Init(CountLines, nullptr) == 0, "Init failed"); });
    }

    CDevApiInterface* m_pDevice = nullptr;
    CDevApiInterface_Temperature* m_pChannel = nullptr;
};

void MeasureReads(Incubator& incubator, BareSocket& bare) {
    const std::string command = "readcurval 9";
    const Ratio ratio =
        RatioOfPairs([&] { return incubator.ReadTemperatures(); },
                     [&] { return Block(kReads, [&] { return Seconds([&] { bare.Exchange(command); }); }); });
    constexpr double kGoal = 1.05;
    PrintRow("channel read / bare exchange", Text(ratio), ratio.median, "<= 1.05", kGoal);
}

void MeasureLog(Incubator& incubator) {
    LogSwitch log;
    const auto readWithLog = [&](DWORD on) {
        log.Set(on);
        incubator.Restart();
        g_logLines = 0;
        const double seconds = incubator.ReadTemperatures();
        Require(g_logLines == (on != 0 ? static_cast<int>(kReads) : 0), "the log did not follow its switch");
        return seconds;
    };
    const Ratio ratio = RatioOfPairs([&] { return readWithLog(1); }, [&] { return readWithLog(0); });
    PrintRow("channel read, communication log on / off", Text(ratio));
    log.Set(0);
    incubator.Restart();
}

void MeasureInit(Incubator& incubator, Responder& responder, BareSocket& bare) {
    // What Close sends comes first and is not Init's.
    responder.TakeCommands();
    incubator.Restart();
    std::vector<std::string> commands = responder.TakeCommands();
    const auto first = std::ranges::find(commands, "listprod");
    Require(first != commands.end(), "Init sent no listprod");
    commands.erase(commands.begin(), first);

    const auto exchanges = [&] {
        for (const std::string& command : commands) {
            bare.Exchange(command);
        }
    };
    const Ratio ratio = RatioOfPairs([&] { return Block(kInits, [&] { return incubator.Restart(); }); },
                                     [&] { return Block(kInits, [&] { return Seconds(exchanges); }); });
    constexpr double kGoal = 1.10;
    PrintRow("Init / its " + std::to_string(commands.size()) + " exchanges, bare", Text(ratio), ratio.median, "<= 1.10",
             kGoal);
}

void MeasureAll() {
    Responder responder;
    BareSocket bare;
    const Library library(L"OkoLabBoldLine.dll");
    Require(library.IsLoaded(), "OkoLabBoldLine.dll could not be loaded");
    Incubator incubator(library);
    MeasureReads(incubator, bare);
    MeasureLog(incubator);
    MeasureInit(incubator, responder, bare);
}

}  // namespace

int main() {
    try {
        MeasureAll();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
