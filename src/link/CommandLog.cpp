#include "link/CommandLog.h"

#include <algorithm>
#include <string_view>

#include "base/Text.h"
#include "core/CDevApiInterface_Impl.h"

void LogExchangeAndEndReply(CDevApiInterface_Impl& device, std::wstring_view prefix, const char* command, char* reply,
                            int length) noexcept {
    // kept: docs/oddities.md#terminator-with-the-log
    if (!device.m_bLogCommunication) {
        return;
    }
    reply[std::max(length, 0)] = '\0';
    if (device.HostCallback == nullptr) {
        return;
    }
    LogLine line(prefix);
    line.Append(L" ").AppendBytes(command).Append(L" -> ").AppendBytes(reply);
    device.Log(line.c_str());
}
