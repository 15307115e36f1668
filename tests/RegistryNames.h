#pragma once

/// The library's registry values, as its users know them: a copy on purpose, for all tests.

inline constexpr const wchar_t* kMiscKey = L"Software\\Vellmark\\Misc";
inline constexpr const wchar_t* kLogValue = L"LogCommunication";
inline constexpr const wchar_t* kTimeoutValue = L"ReplyTimeout";

inline constexpr const wchar_t* kSimulatorsKey = L"Software\\Vellmark\\Misc\\Simulators";
inline constexpr const wchar_t* kSimulatorAnswerValue = L"OKOLab_Bold_Line_listconprod_answer";
