#include "ui/FindAndConnect.h"

#include <cstdint>
#include <string_view>

#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/ProductModes.h"
#include "platform/Clock.h"
#include "platform/Window.h"
#include "ui/ProgressWindow.h"

namespace {

constexpr std::uint32_t kServerPollDelayMs = 1000;
constexpr std::uint32_t kFindPollDelayMs = 500;

/// It says that the search has ended.
// kept: docs/oddities.md#minus-1-anywhere
constexpr std::string_view kSearchEnded = "-1";

/// Searches for one product. `shown` is the percentage that the window shows, `next` the one that it should.
void FindProduct(CDevApiInterface_Impl& device, int product, double& shown, double next) noexcept {
    Tell(device, FormatCommand(command::kFind, {product}));
    bool ended = false;
    // kept: docs/oddities.md#search-without-end
    while (!ended) {
        if (next != shown) {
            // Not in m_iProgress. kept: docs/oddities.md#search-progress-apart
            SendProgress(device.m_hProgressWnd, static_cast<int>(next + 0.5));  // NOLINT(bugprone-incorrect-roundings)
            shown = next;
        }
        SleepMilliseconds(kFindPollDelayMs);
        const Reply reply = Ask(device, FormatCommand(command::kFindStatus));
        ended = reply.text().find(kSearchEnded) != std::string_view::npos;
    }
}

void FindAllProducts(CDevApiInterface_Impl& device) noexcept {
    const int first = device.m_iFirstProduct;
    const int last = device.m_iLastProduct;
    double shown = 0.0;
    double next = 1.0;
    for (int product = first; product <= last; ++product) {
        FindProduct(device, product, shown, next);
        next = static_cast<double>(product - first + 1) / (last - first + 1) * 100.0;
    }
}

// kept: docs/oddities.md#dead-progress-window
void CloseProgressWindow(CDevApiInterface_Impl& device) noexcept {
    if (device.m_bProgressUp.exchange(false)) {
        DestroyWindowHandle(device.m_hProgressWnd);
    }
}

/// Opens the device's progress window. One that an earlier search left up, because the host went no further, could be
/// closed by nobody any more: it goes first.
void ShowProgressWindow(CDevApiInterface_Impl& device, oko::WindowHandle parent, const wchar_t* caption) noexcept {
    CloseProgressWindow(device);
    device.m_hProgressWnd = OpenProgressWindow(device, parent, caption);
    device.m_bProgressUp = true;
}

}  // namespace

// kept: docs/oddities.md#english-everywhere
void FindAndConnect(CDevApiInterface_Impl& device, oko::WindowHandle parent) {
    if (device.EnsureServerRunning(kServerPollDelayMs) != CDevApiInterface_Impl::ServerState::Running) {
        return;
    }
    ShowProgressWindow(device, parent, nullptr);
    SendModes(device);
    FindAllProducts(device);
    CloseProgressWindow(device);

    device.EnumerateProducts();
    if (device.m_bSetupComplete) {
        return;
    }
    ShowProgressWindow(device, parent, L"Connecting");
    device.m_bConnectingShown = true;
    device.ReportProgress(1);
}
