#pragma once

#include <array>
#include <string_view>

class CDevApiInterface_Impl;

/// What the result codes 1 to 3 say; the other codes say nothing.
inline constexpr std::array<std::wstring_view, 4> kResultCodeTexts{{
    L"",
    L"Some problems within OC, not with the Product the current command refers to.",
    L"There is a problem with the Product the current command refers to. The command will be however executed "
    L"correctly.",
    L"There is a problem with the Product the current command refers to. The command will not be executed.",
}};

/// Codes with a text of their own, and the one that means that nothing was done.
inline constexpr int kServerProblem = 1;
inline constexpr int kCommandNotExecuted = 3;

/// Hands "<method> <text>" of a result code to the host's log; nothing for the codes without a text.
void LogResultCode(CDevApiInterface_Impl& device, std::wstring_view method, int code) noexcept;
