#include "core/Exports.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>

#include "core/CDevApiInterface_Impl.h"
#include "oko/LibQuery.h"
#include "platform/Module.h"

namespace {

constexpr std::uint32_t kDevices = 2;

constexpr std::string_view kDeviceType = "Incubator";
constexpr std::array<std::string_view, kDevices> kDeviceNames{"OKO-Lab bold line", "OKO-Lab bold line Simulator"};

std::array<CDevApiInterface_Impl*, kDevices> g_pDevices{};

/// Copies as strncpy and wcsncpy do: a shorter text is padded with zeros.
// kept: docs/oddities.md#text-without-terminator
template <class Char>
void CopyPadded(std::string_view text, Char* buffer, std::int32_t size) noexcept {
    if (buffer == nullptr || size <= 0) {
        return;
    }
    const auto length = static_cast<std::size_t>(size);
    Char* const end = std::ranges::copy(text.substr(0, length), buffer).out;
    std::fill(end, buffer + length, Char{});
}

/// The one place that allocates a device with operator new: the table owns it until the library is detached.
CDevApiInterface_Impl* CreateDevice(std::uint32_t index) noexcept try {
    return new (std::nothrow) CDevApiInterface_Impl(index);  // NOLINT(cppcoreguidelines-owning-memory)
} catch (...) {
    return nullptr;
}

}  // namespace

void AttachModule(void* instance) noexcept {
    g_hInstance = instance;
    g_pDevices.fill(nullptr);
}

void DetachModule() noexcept {
    for (CDevApiInterface_Impl*& device : g_pDevices) {
        delete device;  // NOLINT(cppcoreguidelines-owning-memory)
        device = nullptr;
    }
}

std::int32_t LibQueryPhysDevice(std::uint32_t index, void*, char* type, std::int32_t typeSize, char* name,
                                std::int32_t nameSize, wchar_t* wideName, std::int32_t wideNameSize, wchar_t* wideName2,
                                std::int32_t wideName2Size) {
    if (index >= kDevices) {
        return oko::kFailure;
    }
    CopyPadded(kDeviceType, type, typeSize);
    CopyPadded(kDeviceNames[index], name, nameSize);
    CopyPadded(kDeviceNames[index], wideName, wideNameSize);
    CopyPadded(kDeviceNames[index], wideName2, wideName2Size);
    return oko::kSuccess;
}

std::int32_t LibQueryInterface(std::uint32_t index, void*, CDevApiInterface** device) {
    if (index >= kDevices || device == nullptr) {
        return oko::kFailure;
    }
    if (g_pDevices[index] == nullptr) {
        g_pDevices[index] = CreateDevice(index);
    }
    if (g_pDevices[index] == nullptr) {
        return oko::kFailure;
    }
    *device = g_pDevices[index];
    return oko::kSuccess;
}
