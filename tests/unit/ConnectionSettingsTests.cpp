#include "ui/ConnectionSettings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cwchar>
#include <limits>
#include <optional>
#include <vector>

namespace {

TEST(ConnectionSettingsTests, Format_Port_IsKeyBlankNumber) {
    EXPECT_EQ(FormatConnectionSettings(3).view(), L"m_iComPort 3");
    EXPECT_EQ(FormatConnectionSettings(0).view(), L"m_iComPort 0");
    EXPECT_EQ(FormatConnectionSettings(std::numeric_limits<std::int32_t>::min()).view(), L"m_iComPort -2147483648");
}

TEST(ConnectionSettingsTests, Parse_Texts_MatchOrKeepThePort) {
    struct Case {
        const wchar_t* text;
        std::int32_t port;
    };
    constexpr std::int32_t kBefore = 5;
    for (const Case& row : std::vector<Case>{{L"m_iComPort 3", 3},
                                             {L"m_iComPort   12", 12},
                                             {L"m_iComPort7", 7},
                                             {L"m_iComPort\u300012", 12},
                                             {L"m_iComPort \u00A012", 12},
                                             {L"\u3000m_iComPort 3", kBefore},
                                             {L"m_iComPort -1", -1},
                                             {L"m_iComPort 3x", 3},
                                             {L"m_iComPort", kBefore},
                                             {L"m_iComPort x", kBefore},
                                             {L"", kBefore},
                                             {L" m_iComPort 3", kBefore},
                                             {L"COM3", kBefore},
                                             {L"M_ICOMPORT 3", kBefore}}) {
        SCOPED_TRACE(std::string(row.text, row.text + std::wcslen(row.text)));
        EXPECT_EQ(ParseConnectionSettings(row.text).port.value_or(kBefore), row.port);
    }
}

TEST(ConnectionSettingsTests, Parse_OptionsBehindThePort_InAnyOrderUpToTheFirstThatIsNone) {
    struct Case {
        const wchar_t* text;
        std::optional<std::uint32_t> timeoutMs;
        bool watchOnly;
    };
    for (const Case& row : std::vector<Case>{{L"m_iComPort 3", std::nullopt, false},
                                             {L"m_iComPort 3 m_nReplyTimeout 5000", 5000U, false},
                                             {L"m_iComPort 3 m_bWatchOnly 1", std::nullopt, true},
                                             {L"m_iComPort 3 m_nReplyTimeout 5000 m_bWatchOnly 1", 5000U, true},
                                             {L"m_iComPort 3 m_bWatchOnly 1 m_nReplyTimeout 5000", 5000U, true},
                                             {L"m_iComPort 3\tm_bWatchOnly  1 ", std::nullopt, true},
                                             {L"m_iComPort 3 m_bWatchOnly 0", std::nullopt, false},
                                             {L"m_iComPort 3 m_bWatchOnly 1 m_bWatchOnly 0", std::nullopt, false},
                                             {L"m_iComPort 3 m_nReplyTimeout 0", 0U, false},
                                             {L"m_iComPort 3 m_nReplyTimeout -5 m_bWatchOnly 1", std::nullopt, true},
                                             {L"m_iComPort 3 m_nReplyTimeout", std::nullopt, false},
                                             {L"m_iComPort 3 m_nReplyTimeout x m_bWatchOnly 1", std::nullopt, false},
                                             {L"m_iComPort 3 other m_bWatchOnly 1", std::nullopt, false},
                                             {L"m_iComPort 3 M_BWATCHONLY 1", std::nullopt, false},
                                             {L"m_bWatchOnly 1", std::nullopt, false},
                                             {L"COM3 m_bWatchOnly 1", std::nullopt, false}}) {
        SCOPED_TRACE(std::string(row.text, row.text + std::wcslen(row.text)));
        const ConnectionSettings settings = ParseConnectionSettings(row.text);
        EXPECT_EQ(settings.link.replyTimeoutMs, row.timeoutMs);
        EXPECT_EQ(settings.link.watchOnly, row.watchOnly);
    }
}

}  // namespace
