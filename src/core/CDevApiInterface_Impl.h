#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "core/ChannelSlot.h"
#include "core/ExactEchoes.h"
#include "core/LinkOptions.h"
#include "core/RecentCommands.h"
#include "core/UnansweredCommands.h"
#include "oko/CDevApiInterface.h"  // IWYU pragma: export
#include "platform/Sync.h"
#include "platform/UdpSocket.h"

class CDevApiInterface_Temperature_Impl;
class CDevApiInterface_GasConcentration_Impl;
class CDevApiInterface_Humidifier_Impl;
class LinkOperation;
struct ProductRecord;
struct ChannelViews;

/// The device object: one per device index. It owns the channels, the link to the server and the catalogue of products.
///
/// The thread rules of the host are in oko/CDevApiInterface.h. Every field that several threads use is atomic, or
/// guarded by the lock that its comment names. The locks are taken in this order: m_csData, m_csThread, m_csSocket,
/// m_csCatalogue; the host is never called under the last three.
class CDevApiInterface_Impl final : public CDevApiInterface {
 public:
    static constexpr int kTemperatures = static_cast<int>(oko::kTemperatureChannels);
    static constexpr int kGasConcentrations = static_cast<int>(oko::kGasChannels);
    static constexpr int kHumidifiers = static_cast<int>(oko::kHumidityChannels);
    static constexpr int kMaxComPorts = 64;
    static constexpr int kSimListconprodSize = 256;

    /// `index` is oko::kRealDevice or oko::kSimulatorDevice. Throws when memory or system objects are short.
    explicit CDevApiInterface_Impl(std::uint32_t index);
    ~CDevApiInterface_Impl();
    CDevApiInterface_Impl(const CDevApiInterface_Impl&) = delete;
    CDevApiInterface_Impl& operator=(const CDevApiInterface_Impl&) = delete;

    // The host's slots, described in oko/CDevApiInterface.h.
    std::int32_t Init(oko::HostCallbackFunction callback, void* hostData) noexcept override;
    void Close() noexcept override;
    bool Unused2() noexcept override { return false; }
    oko::WindowHandle CreateValuePanel(oko::WindowHandle parent, oko::DialogProcedure* procedure) noexcept override;
    std::int32_t ShowConfiguration(wchar_t* text, std::int32_t size, oko::WindowHandle parent) noexcept override;
    std::int32_t ApplyConfiguration(const wchar_t* text) noexcept override;
    std::int32_t ShowConnection(wchar_t* text, std::int32_t length, oko::WindowHandle parent) noexcept override;
    std::int32_t ApplyConnection(const wchar_t* text) noexcept override;
    std::int32_t Unused8() noexcept override { return oko::kSuccess; }
    std::int32_t GetTemperatureCount() noexcept override;
    std::int32_t GetTemperature(std::uint32_t index, CDevApiInterface_Temperature** channel) noexcept override;
    std::int32_t GetGasConcentrationCount() noexcept override;
    std::int32_t GetGasConcentration(std::uint32_t index,
                                     CDevApiInterface_GasConcentration** channel) noexcept override;
    std::int32_t GetHumidifierCount() noexcept override;
    std::int32_t GetHumidifier(std::uint32_t index, CDevApiInterface_Humidifier** channel) noexcept override;

    // link/Transport.cpp

    /// Opens the link to the server on the loopback address and gives its number. Failures show themselves at the first
    /// exchange. The timeout is that of `options`, or else the registry's.
    std::uint32_t ConnectSocket(const LinkOptions& options = {}) noexcept;

    /// Lets every receive wait at most so long for its reply, in milliseconds; 0: for ever. A timeout of the connection
    /// text stays. A receive that waits longer gives no answer; the link stays open.
    void SetReplyTimeout(std::uint32_t milliseconds) noexcept;

    /// Closes the link and, when the communication log is on, tells the host's log how that went. `link`: closes that
    /// link only; another one stays open and nothing is told.
    void DisconnectSocket(std::optional<std::uint32_t> link = {}) noexcept;

    /// CommandSend's work. `link`: over that link only; when it is another one by now, nothing is sent and Failed
    /// given.
    Received SendOverLink(std::string_view command, std::span<char> reply, std::optional<std::uint32_t> link) noexcept;

    /// Sends one command and waits for its reply, under the socket lock; the simulator answers itself.
    /// `command` ends in a zero, `commandLength` does not count it. `reply` holds `replySize` bytes AND one spare byte
    /// for the terminator that the communication log writes. `replyLength` may be null; it receives the number of
    /// bytes, negative on failure and when the link is not open. Blocks until the server answers, or for the time of
    /// SetReplyTimeout. Answers to earlier commands, come twice or late, are dropped. On a link that only watches, a
    /// command that is not a reading one is not sent and fails. Any thread.
    void CommandSend(const char* command, int commandLength, char* reply, int replySize, int* replyLength) noexcept;

    // link/Simulator.cpp

    /// Answers a command in the server's place; the arguments are CommandSend's. A reply longer than `replySize` is
    /// cut.
    void CommandSendSim(const char* command, int commandLength, char* reply, int replySize, int* replyLength) noexcept;

    // link/SimulatorAnswer.cpp

    /// Takes the simulator's list of products from the registry, or writes the default there.
    void LoadSimulatorAnswer() noexcept;

    // link/ServerLaunch.cpp

    /// What came of looking for the server. Interrupted: the link was closed or opened anew meanwhile.
    enum class ServerState { Running, Silent, Refusing, Interrupted };

    /// Probes the server with "listprod", finds and starts it when it does not answer, and tells the user when it does
    /// not answer or refuses. On a link that only watches it starts nothing, and the host's log is told instead of the
    /// user. `pollDelayMs`: pause between two probes of a server that was just started. `progressOnceProbed`:
    /// percentage to report before the user is told.
    ServerState EnsureServerRunning(const LinkOperation& operation, std::uint32_t pollDelayMs,
                                    std::optional<int> progressOnceProbed = {}) noexcept;

    // core/ChannelAssignment.cpp

    /// Gives every product of the catalogue its channels, and asks the server which sensors and ranges they have.
    /// Nothing is assigned after the operation has ended.
    void AssignChannels(const LinkOperation& operation) noexcept;

    // catalogue/

    /// Asks the server which products are connected, and what devices and parameters each has. The catalogue stays as
    /// it was when the operation ends before the products are known. Throws std::bad_alloc.
    void EnumerateProducts(const LinkOperation& operation);

    /// Logs the errors in a reply to "status" and takes failing devices and products out of the catalogue.
    void CheckStatus(const char* reply, int replyLength) noexcept;

    // channels/

    /// The fields of all channels that the simulator answers from.
    ChannelViews ViewChannels() const noexcept;

    /// Starts and stops the simulator's value thread. Both are harmless when there is nothing to do. No thread is
    /// started for an operation that has ended.
    void StartValueThread(const LinkOperation& operation) noexcept;
    void StopValueThread() noexcept;

    // core/HostCalls.cpp

    /// Calls the host when there is a callback, which is looked at once. An exception that the host lets out ends here.
    void CallHost(std::int32_t code, const wchar_t* text) noexcept;

    /// Hands one line to the host's log.
    void Log(const wchar_t* line) noexcept;

    /// Keeps `percent` and shows it in the progress window when there is one.
    void ReportProgress(int percent) noexcept;

    /// Writes the reason to the host's log and ends the process: what follows would overrun a buffer.
    [[noreturn]] void FatalFault(const wchar_t* reason) noexcept;

    /// Takes a channel that was deleted through its own slot out of its array.
    void ForgetTemperature(int index) noexcept { m_pTemperature[static_cast<std::size_t>(index)].Take(); }
    void ForgetGasConcentration(int index) noexcept { m_pGasConcentration[static_cast<std::size_t>(index)].Take(); }
    void ForgetHumidifier(int index) noexcept { m_pHumidifier[static_cast<std::size_t>(index)].Take(); }

    const std::uint32_t m_iDeviceIndex;  // nothing reads it: m_bSimulator says the same
    Thread m_hThread;                    // the simulator's value thread, guarded by m_csThread
    void* m_pHostData = nullptr;         // Init's second argument; nothing reads it

    // How many channels of each kind are live, and all channels; both bounds hold before the first Init.
    std::atomic<std::int32_t> m_nTemperatures = kTemperatures;
    std::array<ChannelSlot<CDevApiInterface_Temperature_Impl>, kTemperatures> m_pTemperature;
    std::atomic<std::int32_t> m_nGasConcentrations = kGasConcentrations;
    std::array<ChannelSlot<CDevApiInterface_GasConcentration_Impl>, kGasConcentrations> m_pGasConcentration;
    std::atomic<std::int32_t> m_nHumidifiers = kHumidifiers;
    std::array<ChannelSlot<CDevApiInterface_Humidifier_Impl>, kHumidifiers> m_pHumidifier;

    oko::WindowHandle m_hNotifyWnd = nullptr;  // takes the channels' change notices; nothing sets it
    bool m_bThreadRun = true;                  // the value thread goes on; guarded by m_csData
    std::uint32_t m_nThreadRun = 0;  // which of the value threads that were started may go on; guarded by m_csData
    CriticalSection m_csData;        // channel values, the air-mode watch, m_bThreadRun
    CriticalSection m_csThread;      // m_hThread, while a value thread is started or stopped
    FairLock m_csSocket;             // one send and receive, and the link itself

    // What is connected: m_products, the channels' ranges, m_szSimListconprod. The innermost lock: held for a few lines
    // at a time, never during an exchange or a call of the host.
    mutable CriticalSection m_csCatalogue;
    std::atomic<oko::HostCallbackFunction> HostCallback = nullptr;
    std::atomic<bool> m_bLogCommunication = false;

    std::atomic<std::int32_t> m_iProgress = 0;     // percent, last sent to the progress window; nothing reads it
    std::atomic<bool> m_bConnectingShown = false;  // a search has opened "Connecting"; nothing reads or clears it
    std::atomic<bool> m_bSetupComplete = false;    // ApplyConfiguration has run since the last Close
    std::atomic<oko::WindowHandle> m_hProgressWnd = nullptr;
    std::atomic<bool> m_bProgressUp = false;  // m_hProgressWnd was opened and not yet destroyed
    ManualResetEvent m_hThreadStopped;

    // The host's buffers for the two settings texts and the sizes it gave, in characters. Only m_pszConnectionText is
    // read: slot 4 works with its argument, and both texts are written whole whatever the size.
    wchar_t* m_pszConfigText = nullptr;
    std::int32_t m_nConfigTextSize = 0;
    wchar_t* m_pszConnectionText = nullptr;
    std::int32_t m_nConnectionTextLen = 0;
    std::array<double, 2> m_adSpareTolerances{1.0, 1.0};  // nothing reads or writes them

    std::atomic<std::int32_t> m_iComPort;        // where the incubator is connected
    std::atomic<bool> m_bFindRequested = false;  // the connection dialog asked for a search; nothing reads it
    std::array<std::int32_t, kMaxComPorts> m_aiComPorts{};  // the port list, in list order
    std::int32_t m_nComPorts = 0;

    const bool m_bSimulator;
    // The link to the server, guarded by m_csSocket.
    UdpSocket m_socket;
    RecentCommands m_recentCommands;
    UnansweredCommands m_unansweredCommands;
    ExactEchoes m_exactEchoes;
    bool m_bLooseEchoes = false;  // the server does not echo to the letter: no reply is held back any more
    std::optional<std::uint32_t> m_textTimeoutMs;  // the connection text's
    std::uint32_t m_nReplyTimeoutMs = 0;           // how long a receive waits for a reply; 0: for ever

    // Which link is open, or was closed last. Changed under m_csSocket, and by Close as its first step.
    std::atomic<std::uint32_t> m_nLink = 0;
    std::atomic<bool> m_bWatchOnly = false;  // reading commands alone are sent

    std::atomic<bool> m_bServerErrorShown = false;
    std::vector<ProductRecord> m_products;  // the catalogue, guarded by m_csCatalogue: go through catalogue/Catalogue.h
    std::atomic<std::uint8_t> m_bAirMode = 0;
    const std::int32_t m_iFirstProduct;      // "each product" of Init and of the search: from here ...
    const std::int32_t m_iLastProduct;       // ... to here, inclusive
    std::atomic<bool> m_bBusy = false;       // an operation holds the link: channel reads answer from memory
    std::atomic<bool> m_bSettingUp = false;  // an Init or a search is under way: a second one is refused

    // The simulator's complete reply to "listconprod".
    std::array<char, kSimListconprodSize> m_szSimListconprod{};

 private:
    std::int32_t Initialise(oko::HostCallbackFunction callback, void* hostData);
    std::int32_t SetUpProducts(std::uint32_t link);
    void CreateChannels();
    void DestroyChannels() noexcept;
};
