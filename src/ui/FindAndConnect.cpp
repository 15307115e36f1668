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
void FindProduct(const LinkOperation& operation, int product, double& shown, double next) noexcept {
    Tell(operation, FormatCommand(command::kFind, {product}));
    bool ended = false;
    // kept: docs/oddities.md#search-without-end
    while (!ended && !operation.HasEnded()) {
        if (next != shown) {
            // Not in m_iProgress. kept: docs/oddities.md#search-progress-apart
            SendProgress(operation.Device().m_hProgressWnd,
                         static_cast<int>(next + 0.5));  // NOLINT(bugprone-incorrect-roundings)
            shown = next;
        }
        KeepWindowsResponding();
        SleepMilliseconds(kFindPollDelayMs);
        const Reply reply = Ask(operation, FormatCommand(command::kFindStatus));
        ended = reply.text().find(kSearchEnded) != std::string_view::npos;
    }
}

void FindAllProducts(const LinkOperation& operation) noexcept {
    const int first = operation.Device().m_iFirstProduct;
    const int last = operation.Device().m_iLastProduct;
    double shown = 0.0;
    double next = 1.0;
    for (int product = first; product <= last; ++product) {
        FindProduct(operation, product, shown, next);
        next = static_cast<double>(product - first + 1) / (last - first + 1) * 100.0;
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
void FindAndConnect(const LinkOperation& operation, oko::WindowHandle parent) {
    CDevApiInterface_Impl& device = operation.Device();
    if (device.EnsureServerRunning(operation, kServerPollDelayMs) != CDevApiInterface_Impl::ServerState::Running) {
        return;
    }
    ShowProgressWindow(device, parent, nullptr);
    SendModes(operation);
    FindAllProducts(operation);
    CloseProgressWindow(device);

    device.EnumerateProducts(operation);
    if (device.m_bSetupComplete || operation.HasEnded()) {
        return;
    }
    ShowProgressWindow(device, parent, L"Connecting");
    device.m_bConnectingShown = true;
    device.ReportProgress(1);
}
