#include "base/Scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// What "%d(%d)" takes from a text, counted as sscanf counts.
int ScanAddress(std::string_view text, int& product, int& device) {
    Scanner scanner(text);
    int count = scanner.Integer(product) ? 1 : 0;
    count += scanner.Literal("(") && scanner.Integer(device) ? 1 : 0;
    return count;
}

TEST(ScanTests, Integers_AreTakenAsSscanfTakesThem) {
    for (const std::string text : {"7(1)", "17(6)", "7", "", " 7( 2)", "7 (1)", "x(1)", "7(x)", "-7(-1)", "7(1"}) {
        SCOPED_TRACE(text);
        int product = -5;
        int device = -6;
        int expectedProduct = -5;
        int expectedDevice = -6;
        const int expected = std::sscanf(text.c_str(), "%d(%d)", &expectedProduct, &expectedDevice);
        EXPECT_EQ(ScanAddress(text, product, device), std::max(expected, 0));
        EXPECT_EQ(product, expectedProduct);
        EXPECT_EQ(device, expectedDevice);
    }
}

TEST(ScanTests, BlankInTheLiteral_MatchesAnyWhiteSpaceAndNone) {
    for (const std::wstring text : {L"a b", L"a   b", L"a\t\r\nb", L"ab"}) {
        EXPECT_TRUE(Scanner(std::wstring_view(text)).Literal("a b")) << testing::PrintToString(text);
    }
}

/// Every character that the wide run-time functions of Windows skip, beside the blanks of ASCII.
constexpr std::wstring_view kWideBlanks =
    L"\u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u2028\u2029\u202F\u205F"
    L"\u3000";

TEST(ScanTests, WideBlanks_AreWhiteSpaceBeforeNumbersAndInLiterals) {
    for (const wchar_t blank : kWideBlanks) {
        SCOPED_TRACE(static_cast<int>(blank));
        const std::wstring text = std::wstring(L"a ") + blank + L"b" + blank + L"\t" + blank + L"2.5" + blank + L"7";
        Scanner scanner{std::wstring_view(text)};
        double number = 0.0;
        int integer = 0;
        EXPECT_TRUE(scanner.Literal("a b"));
        EXPECT_TRUE(scanner.Double(number));
        EXPECT_TRUE(scanner.Integer(integer));
        EXPECT_EQ(number, 2.5);
        EXPECT_EQ(integer, 7);
    }
}

TEST(ScanTests, WideCharacters_ThatAreNoBlanks_AreNotSkipped) {
    std::vector<int> blanks;
    for (int c = 0x80; c < 0x10000; ++c) {
        const std::wstring text = static_cast<wchar_t>(c) + std::wstring(L"1");
        int value = 0;
        if (Scanner(std::wstring_view(text)).Integer(value)) {
            blanks.push_back(c);
        }
    }
    EXPECT_EQ(blanks, std::vector<int>(kWideBlanks.begin(), kWideBlanks.end()));
}

TEST(ScanTests, WireTexts_KnowTheBlanksOfAsciiOnly) {
    for (const std::string text : {"\xA0", "\x85", "\xE3\x80\x80"}) {
        SCOPED_TRACE(testing::PrintToString(text));
        int value = 5;
        EXPECT_FALSE(Scanner(std::string_view(text + "1")).Integer(value));
        EXPECT_FALSE(Scanner(std::string_view(text + "a")).Literal(" a"));
        EXPECT_EQ(value, 5);
    }
}

TEST(ScanTests, BlankInTheText_IsNoLiteral) { EXPECT_FALSE(Scanner(std::string_view(" a")).Literal("a")); }

TEST(ScanTests, AfterAMismatch_NothingMatchesAnyMore) {
    Scanner scanner(std::string_view("a1"));
    int value = 5;
    EXPECT_FALSE(scanner.Literal("b"));
    EXPECT_FALSE(scanner.Literal("a"));
    EXPECT_FALSE(scanner.Integer(value));
    EXPECT_EQ(value, 5);
}

TEST(ScanTests, AfterAMismatch_AWaitingNumberIsNotTaken) {
    Scanner scanner(std::string_view("1"));
    int value = 5;
    EXPECT_FALSE(scanner.Literal("b"));
    EXPECT_FALSE(scanner.Integer(value));
    EXPECT_EQ(value, 5);
}

TEST(ScanTests, Double_OfAnyLengthThatPrintfPrints_IsTaken) {
    const std::wstring text = L"-1" + std::wstring(308, L'7') + L".000000 |";
    Scanner scanner{std::wstring_view(text)};
    double value = 0.0;
    EXPECT_TRUE(scanner.Double(value));
    EXPECT_TRUE(scanner.Literal(" |"));
}

TEST(ScanTests, Double_NotFinite_IsAMismatch) {
    for (const std::string_view text : {"nan", "-nan", "inf", "-infinity", "1e999", "-1e999"}) {
        SCOPED_TRACE(text);
        Scanner scanner(text);
        double value = 3.0;
        EXPECT_FALSE(scanner.Double(value));
        EXPECT_EQ(value, 3.0);
        EXPECT_FALSE(scanner.Literal(text));
    }
}

TEST(ScanTests, Double_WideDigitsOfOtherScripts_AreNone) {
    double value = 3.0;
    EXPECT_FALSE(Scanner(std::wstring_view(L"\u0661")).Double(value));
    EXPECT_EQ(value, 3.0);
}

}  // namespace
