// The files that the page is made of, inside the program.

#include "page/Assets.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <string_view>

namespace {

std::string_view Bytes(std::string_view name) {
    const Asset* const asset = FindAsset(name);
    return asset == nullptr ? std::string_view{} : asset->bytes;
}

TEST(Assets, PageNamesOnlyFilesThatAreThere) {
    const std::string page(Bytes("page.html"));
    const std::regex reference("(?:src|href)=\"([^\"#][^\"]*)\"");
    int references = 0;
    for (std::sregex_iterator match(page.begin(), page.end(), reference); match != std::sregex_iterator(); ++match) {
        EXPECT_NE(FindAsset((*match)[1].str()), nullptr) << (*match)[1];
        ++references;
    }
    EXPECT_GE(references, 3);
}

TEST(Assets, PageHasNoInlineScriptOrStyle) {
    const std::string page(Bytes("page.html"));
    EXPECT_FALSE(std::regex_search(page, std::regex("<script(?![^>]* src=)|<style|\\sstyle=|\\son[a-z]+=")));
}

TEST(Assets, FileIsWhatItWasToTheByte) {
    const std::string_view charts = Bytes("dygraph.js");
    EXPECT_TRUE(charts.starts_with("/*! @license")) << "the licence stays with the code";
    EXPECT_GT(charts.size(), 100000U);
    EXPECT_NE(charts.find("Dygraph"), std::string_view::npos);
    EXPECT_TRUE(Bytes("page.html").ends_with("</html>\n"));
}

TEST(Assets, ContentTypeIsTheKindsOfFile) {
    ASSERT_NE(FindAsset("page.html"), nullptr);
    EXPECT_EQ(FindAsset("page.html")->contentType, "text/html; charset=utf-8");
    EXPECT_EQ(FindAsset("page.css")->contentType, "text/css; charset=utf-8");
    EXPECT_EQ(FindAsset("dygraph.js")->contentType, "text/javascript; charset=utf-8");
}

TEST(Assets, UnknownNameIsNone) {
    EXPECT_EQ(FindAsset(""), nullptr);
    EXPECT_EQ(FindAsset("page"), nullptr);
    EXPECT_EQ(FindAsset("../page.html"), nullptr);
}

}  // namespace
