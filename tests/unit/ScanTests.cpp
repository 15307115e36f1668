#include "base/Scan.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
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
        EXPECT_TRUE(Scanner(std::wstring_view(text)).Literal("a b"));
    }
    EXPECT_FALSE(Scanner(std::wstring_view(L"a\u00A0b")).Literal("a b"));
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

TEST(ScanTests, Double_OfAnyLengthThatPrintfPrints_IsTaken) {
    const std::wstring text = L"-1" + std::wstring(308, L'7') + L".000000 |";
    Scanner scanner{std::wstring_view(text)};
    double value = 0.0;
    EXPECT_TRUE(scanner.Double(value));
    EXPECT_TRUE(scanner.Literal(" |"));
}

TEST(ScanTests, Double_NotFinite_IsAMismatch) {
    for (const std::string_view text : {"nan", "-nan", "inf", "-infinity", "1e999", "-1e999"}) {
        Scanner scanner(text);
        double value = 3.0;
        EXPECT_FALSE(scanner.Double(value)) << text;
        EXPECT_EQ(value, 3.0);
        EXPECT_FALSE(scanner.Literal(text)) << text;
    }
}

TEST(ScanTests, Double_WideDigitsOfOtherScripts_AreNone) {
    double value = 3.0;
    EXPECT_FALSE(Scanner(std::wstring_view(L"\u0661")).Double(value));
    EXPECT_EQ(value, 3.0);
}

}  // namespace
