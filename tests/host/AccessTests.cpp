// Who may see the page, and who may set targets with it.

#include "page/Access.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

#include "page/Request.h"

namespace {

const std::string kToken = "0123456789abcdef";

AccessRules Local() { return {true, kToken, true, {"microscope7"}}; }
AccessRules Elsewhere() { return {false, kToken, true, {"microscope7"}}; }

Request From(Headers headers) { return {"GET", "/", std::move(headers), ""}; }
Request Called(const std::string& host) { return From({{"Host", host}}); }

TEST(Access, ThisComputerReadsWithoutAToken) {
    for (const char* host : {"127.0.0.1:8080", "127.0.0.1", "localhost", "LocalHost:8080", "[::1]:8080", "[::1]",
                             "192.168.1.7:9000", "microscope7:8080", "Microscope7"}) {
        EXPECT_EQ(MayRead(Called(host), Local()), Access::Granted) << host;
    }
}

TEST(Access, NameThatIsNotOursIsRefusedWithAndWithoutAToken) {
    for (const char* host :
         {"evil.example:8080", "localhost.evil.example", "127.0.0.1.evil.example", "1.2.3", "a.b.c.d",
          "[::1].evil.example", "", "microscope7.evil.example", "[::1", "127.0.0.1@evil.example"}) {
        EXPECT_EQ(MayRead(Called(host), Local()), Access::BadHost) << host;
        const Request request = From({{"Host", host}, {"Authorization", "Bearer " + kToken}});
        EXPECT_EQ(MayRead(request, Elsewhere()), Access::BadHost) << host;
        EXPECT_EQ(MaySet(request, Local()), Access::BadHost) << host;
    }
    EXPECT_EQ(MayRead(From({}), Local()), Access::BadHost);
    EXPECT_EQ(MayRead(From({{"Host", "localhost"}, {"host", "evil.example"}}), Local()), Access::BadHost);
}

TEST(Access, PageOfAnotherSiteIsRefused) {
    const auto sentBy = [](const std::string& origin) {
        return From({{"Host", "localhost:8080"}, {"Origin", origin}, {"Authorization", "Bearer " + kToken}});
    };
    EXPECT_EQ(MaySet(sentBy("http://localhost:8080"), Local()), Access::Granted);
    EXPECT_EQ(MaySet(sentBy("https://localhost:8080"), Local()), Access::Granted);
    for (const char* origin : {"http://evil.example", "null", "", "http://localhost:8081", "http://localhost",
                               "http://127.0.0.1:8080", "http://localhost:8080.evil.example"}) {
        EXPECT_EQ(MaySet(sentBy(origin), Local()), Access::BadOrigin) << origin;
        EXPECT_EQ(MayRead(sentBy(origin), Local()), Access::BadOrigin) << origin;
    }
    EXPECT_EQ(MayRead(From({{"Host", "localhost"}, {"Origin", "http://localhost"}, {"Origin", "null"}}), Local()),
              Access::BadOrigin);
}

TEST(Access, ElsewhereReadingNeedsTheToken) {
    EXPECT_EQ(MayRead(Called("192.168.1.7"), Elsewhere()), Access::NeedsToken);
    EXPECT_EQ(MayRead(From({{"Host", "192.168.1.7"}, {"Authorization", "Bearer " + kToken}}), Elsewhere()),
              Access::Granted);
    EXPECT_EQ(MayRead(From({{"Host", "192.168.1.7"}, {"Cookie", "a=b; oko_token=" + kToken + "; c=d"}}), Elsewhere()),
              Access::Granted);
    for (const char* cookie : {"oko_token=", "oko_token", "xoko_token=0123456789abcdef", "oko_tokens=0123456789abcdef",
                               "oko_token=0123456789abcdeF", "oko_token=0123456789abcdef0"}) {
        EXPECT_EQ(MayRead(From({{"Host", "192.168.1.7"}, {"Cookie", cookie}}), Elsewhere()), Access::NeedsToken)
            << cookie;
    }
}

TEST(Access, SettingAlwaysNeedsTheTokenAndThePermission) {
    EXPECT_EQ(MaySet(Called("localhost"), Local()), Access::NeedsToken);
    const Request withToken = From({{"Host", "localhost"}, {"authorization", "bearer " + kToken}});
    EXPECT_EQ(MaySet(withToken, Local()), Access::Granted);
    AccessRules rules = Local();
    rules.allowSet = false;
    EXPECT_EQ(MaySet(withToken, rules), Access::MustNotSet);
    EXPECT_EQ(MaySet(Called("localhost"), rules), Access::NeedsToken);
    EXPECT_EQ(MaySet(From({{"Host", "localhost"}, {"Authorization", "Basic " + kToken}}), Local()), Access::NeedsToken);
}

TEST(Access, WithoutATokenNobodyHasIt) {
    AccessRules rules = Elsewhere();
    rules.token.clear();
    EXPECT_EQ(MayRead(From({{"Host", "localhost"}, {"Authorization", "Bearer "}}), rules), Access::NeedsToken);
    EXPECT_EQ(MaySet(From({{"Host", "localhost"}, {"Cookie", "oko_token="}}), rules), Access::NeedsToken);
    EXPECT_FALSE(IsToken("", ""));
}

TEST(Access, TokenIsAllOfIt) {
    EXPECT_TRUE(IsToken(kToken, kToken));
    EXPECT_FALSE(IsToken("", kToken));
    EXPECT_FALSE(IsToken(kToken + kToken, kToken));
    EXPECT_FALSE(IsToken(kToken.substr(0, 15), kToken));
    for (std::size_t i = 0; i < kToken.size(); ++i) {
        std::string wrong = kToken;
        wrong[i] = 'x';
        EXPECT_FALSE(IsToken(wrong, kToken)) << wrong;
    }
}

TEST(Access, CookieIsKeptFromScriptsAndOtherSites) {
    EXPECT_EQ(TokenCookie("abc"), "oko_token=abc; Path=/; HttpOnly; SameSite=Strict");
}

}  // namespace
