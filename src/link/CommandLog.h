#pragma once

#include <string_view>

class CDevApiInterface_Impl;

/// Hands "<prefix> <command> -> <reply>" to the host's log while the communication log is on, and only then ends the
/// reply with a zero: at `length`, or at its start when the exchange failed. `reply` needs a byte behind `length`.
void LogExchangeAndEndReply(CDevApiInterface_Impl& device, std::wstring_view prefix, const char* command, char* reply,
                            int length) noexcept;
