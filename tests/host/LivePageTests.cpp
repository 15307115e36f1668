// The page as a command owns it.

#include "page/LivePage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "HttpClient.h"
#include "MadeSnapshot.h"
#include "model/Event.h"

namespace {

using Json = nlohmann::json;

LivePage::Options OnFreePort() {
    LivePage::Options options;
    options.port = 0;
    return options;
}

void SetNothing(std::uint64_t, const std::string&, double) {}

std::uint16_t PortOf(const LivePage& page) {
    const std::string url = page.Url();
    return static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
}

HttpClient::Reply AskPage(const LivePage& page, const std::string& wire) {
    HttpClient client(PortOf(page));
    client.Send(wire);
    return client.Read();
}

TEST(LivePage, ShowsWhatIsPublished) {
    LivePage page(OnFreePort(), SetNothing);
    ASSERT_EQ(page.Start(), std::nullopt);
    EXPECT_EQ(AskPage(page, Wire("GET", "/api/channels")).status, 503);
    page.Publish(MadeSnapshot(1));
    page.Publish(MadeSnapshot(2));
    page.Publish(Event{1, {}, EventKind::Started, "", "hello"});
    EXPECT_EQ(Json::parse(AskPage(page, Wire("GET", "/api/channels")).body)["row"], 2);
    EXPECT_EQ(Json::parse(AskPage(page, Wire("GET", "/api/history")).body)["time"].size(), 2U);
    EXPECT_EQ(Json::parse(AskPage(page, Wire("GET", "/api/events")).body)["events"][0]["text"], "hello");
}

TEST(LivePage, MakesUpATokenThatNobodyElseHas) {
    LivePage::Options options = OnFreePort();
    options.allowSet = true;
    LivePage page(options, SetNothing);
    LivePage other(options, SetNothing);
    ASSERT_EQ(page.Start(), std::nullopt);
    const std::string url = page.UrlWithToken();
    ASSERT_TRUE(url.starts_with(page.Url() + "?token=")) << url;
    const std::string token = url.substr(url.find('=') + 1);
    EXPECT_EQ(token.size(), 32U);
    EXPECT_FALSE(other.UrlWithToken().ends_with(token));
    EXPECT_EQ(AskPage(page, Wire("GET", "/?token=" + token)).status, 303);
}

TEST(LivePage, TargetGoesToItsOwnerAndBack) {
    LivePage::Options options = OnFreePort();
    options.allowSet = true;
    options.token = "0123-abc";
    std::optional<LivePage> page;
    page.emplace(options, [&](std::uint64_t request, const std::string& key, double value) {
        page->TargetDone(request, key == "gas:CO2" ? std::optional(value) : std::nullopt);
    });
    ASSERT_EQ(page->Start(), std::nullopt);
    page->Publish(MadeSnapshot(1));
    const auto put = [&](const std::string& key) {
        return AskPage(*page, Wire("PUT", "/api/channels/" + key + "/target", "Authorization: Bearer 0123-abc\r\n",
                                   "{\"value\":7}"));
    };
    EXPECT_EQ(put("gas:CO2").body, R"({"channel":"gas:CO2","asked":7,"taken":7,"clamped":false})");
    EXPECT_EQ(put("H301-T").status, 504);
}

TEST(LivePage, ElsewhereOnlyTheTokenOpensIt) {
    LivePage::Options options = OnFreePort();
    options.address = "0.0.0.0";
    LivePage page(options, SetNothing);
    ASSERT_EQ(page.Start(), std::nullopt);
    EXPECT_EQ(AskPage(page, Wire("GET", "/api/events")).status, 401);
    const std::string url = page.UrlWithToken();
    EXPECT_EQ(
        AskPage(page, Wire("GET", "/api/events", "Authorization: Bearer " + url.substr(url.find('=') + 1) + "\r\n"))
            .status,
        200);
    EXPECT_EQ(url.find("0.0.0.0"), std::string::npos);
}

TEST(LivePage, TokenThatCannotStandInACookieIsRefused) {
    for (const char* token : {"short", "with blank", "semi;colon", "\"quoted\"", "plus+plus+plus"}) {
        LivePage::Options options = OnFreePort();
        options.token = token;
        EXPECT_NE(LivePage(options, SetNothing).Start(), std::nullopt) << token;
    }
}

}  // namespace
