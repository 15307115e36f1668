#pragma once

#include <string>

/// What the user and the host's log are told of the result codes 1 to 3: a copy on purpose, for all tests.
inline constexpr const wchar_t* kServerProblemText =
    L"Some problems within OC, not with the Product the current command refers to.";
inline constexpr const wchar_t* kProductProblemText =
    L"There is a problem with the Product the current command refers to. The command will be however executed "
    L"correctly.";
inline constexpr const wchar_t* kNotExecutedText =
    L"There is a problem with the Product the current command refers to. The command will not be executed.";

/// The log line of one of these codes.
inline std::wstring ResultLine(const std::wstring& method, int code) {
    return method + L" " + (code == 1 ? kServerProblemText : code == 2 ? kProductProblemText : kNotExecutedText);
}
