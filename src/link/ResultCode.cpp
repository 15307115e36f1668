#include "link/ResultCode.h"

#include <cstddef>
#include <string_view>

#include "base/Text.h"
#include "core/CDevApiInterface_Impl.h"

void LogResultCode(CDevApiInterface_Impl& device, std::wstring_view method, int code) noexcept {
    if (code < kServerProblem || code > kCommandNotExecuted) {
        return;
    }
    const auto text = kResultCodeTexts[static_cast<std::size_t>(code)];
    device.Log(LogLine(method).Append(L" ").Append(text).c_str());
}
