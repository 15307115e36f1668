#include "catalogue/StatusCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Fixture.h"
#include "catalogue/ProductRecord.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"

namespace {

class StatusCheckTests : public DeviceTest {
 protected:
    /// A device whose catalogue holds these products with these devices.
    CDevApiInterface_Impl& DeviceWith(std::vector<ProductRecord> products) {
        CDevApiInterface_Impl& device = RealDevice();
        device.m_products = std::move(products);
        return device;
    }

    static void Check(CDevApiInterface_Impl& device, const std::string& reply) {
        device.CheckStatus(reply.c_str(), static_cast<int>(reply.size()));
    }

    static std::vector<std::pair<int, std::vector<int>>> Catalogue(const CDevApiInterface_Impl& device) {
        std::vector<std::pair<int, std::vector<int>>> catalogue;
        for (const ProductRecord& record : device.m_products) {
            catalogue.emplace_back(record.m_iProduct,
                                   std::vector<int>(record.m_devices.begin(), record.m_devices.end()));
        }
        return catalogue;
    }
};

using Products = std::vector<std::pair<int, std::vector<int>>>;

TEST_F(StatusCheckTests, FinishedTriple_RemovesTheDeviceAndIsLogged) {
    CDevApiInterface_Impl& device = DeviceWith({{9, {0}, {}}, {12, {0, 1}, {}}});
    Check(device, "0_status_12 1 4 \r");
    EXPECT_EQ(Catalogue(device), (Products{{9, {0}}, {12, {0}}}));
    EXPECT_EQ(HostLog::Lines(),
              std::vector<std::wstring>{L"OKO-Lab bold line status error: product 12, device 1, error: 4"});
}

TEST_F(StatusCheckTests, LastDeviceOfAProduct_TakesTheProductAlong) {
    CDevApiInterface_Impl& device = DeviceWith({{9, {0}, {}}, {12, {1}, {}}, {15, {0}, {}}});
    Check(device, "0_status_12 1 4 \r");
    EXPECT_EQ(Catalogue(device), (Products{{9, {0}}, {15, {0}}}));
}

TEST_F(StatusCheckTests, TripleEndedByTheCarriageReturn_IsUnfinished) {
    CDevApiInterface_Impl& device = DeviceWith({{12, {1}, {}}});
    Check(device, "0_status_12 1 4\r");
    EXPECT_EQ(Catalogue(device), (Products{{12, {1}}}));
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(StatusCheckTests, Error0_IsAnErrorLikeAnyOther) {
    CDevApiInterface_Impl& device = DeviceWith({{9, {0}, {}}, {12, {0, 1}, {}}});
    Check(device, "0_status_12 1 0 \r");
    EXPECT_EQ(Catalogue(device), (Products{{9, {0}}, {12, {0}}}));
    EXPECT_EQ(HostLog::Lines(),
              std::vector<std::wstring>{L"OKO-Lab bold line status error: product 12, device 1, error: 0"});
}

TEST_F(StatusCheckTests, ErrorsOfThreeDigits_AreErrorsLikeAnyOther) {
    CDevApiInterface_Impl& device = DeviceWith({{9, {0}, {}}, {12, {0, 1}, {}}, {15, {0, 1}, {}}});
    Check(device, "0_status_12 1 100 15 0 999 \r");
    EXPECT_EQ(Catalogue(device), (Products{{9, {0}}, {12, {0}}, {15, {1}}}));
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{L"OKO-Lab bold line status error: product 12, device 1, error: 100",
                                         L"OKO-Lab bold line status error: product 15, device 0, error: 999"}));
}

TEST_F(StatusCheckTests, SeveralTriples_AreTakenInOrder) {
    CDevApiInterface_Impl& device = DeviceWith({{9, {0}, {}}, {12, {0, 1}, {}}, {12, {0}, {}}});
    Check(device, "0_status_12 0 1 12 1 2 12 0 3 9 5 0 8 0 1 \r");
    EXPECT_EQ(Catalogue(device), (Products{{9, {0}}}));
    ASSERT_EQ(HostLog::Lines().size(), 5U);
    EXPECT_EQ(HostLog::Lines()[3], L"OKO-Lab bold line status error: product 9, device 5, error: 0");
    EXPECT_EQ(HostLog::Lines()[4], L"OKO-Lab bold line status error: product 8, device 0, error: 1");
}

TEST_F(StatusCheckTests, ElementThatMovesIntoTheGap_IsNotCompared) {
    CDevApiInterface_Impl& device = DeviceWith({{12, {1, 1, 0, 1}, {}}});
    Check(device, "0_status_12 1 4 \r");
    EXPECT_EQ(Catalogue(device), (Products{{12, {1, 0}}}));
}

TEST_F(StatusCheckTests, ProductWithoutDevices_IsRemovedByAnyOfItsErrors) {
    CDevApiInterface_Impl& device = DeviceWith({{12, {}, {}}});
    Check(device, "0_status_12 1 4 \r");
    EXPECT_TRUE(device.m_products.empty());
}

TEST_F(StatusCheckTests, RepliesWithoutTriples_DoNothing) {
    for (const std::string reply : {"", "0", "0_status_", "0_status_\r", "0_status_ ", "0_status_ \r", "12 1 4 9 ",
                                    "0_status_1 2\r", "0_status_1 2 3"}) {
        SCOPED_TRACE(reply);
        CDevApiInterface_Impl& device = DeviceWith({{1, {2}, {}}, {12, {1}, {}}});
        Check(device, reply);
        EXPECT_EQ(device.m_products.size(), 2U);
        EXPECT_TRUE(HostLog::Lines().empty());
    }
    CDevApiInterface_Impl& device = DeviceWith({{12, {1}, {}}});
    device.CheckStatus("0_status_12 1 4 ", -1);
    device.CheckStatus("0_status_12 1 4 ", 9);
    EXPECT_TRUE(HostLog::Lines().empty());
}

TEST_F(StatusCheckTests, AnyOtherCharacter_EndsANumberEvenAnEmptyOne) {
    std::vector<std::vector<int>> triples;
    const auto outcome = ParseStatus("0_status_12x1,4;  7-", [&](const StatusError& status) {
        triples.push_back({status.product, status.device, status.error});
    });
    EXPECT_EQ(outcome, StatusOutcome::Complete);
    EXPECT_EQ(triples, (std::vector<std::vector<int>>{{12, 1, 4}, {0, 0, 7}}));
}

TEST_F(StatusCheckTests, FirstNineCharacters_AreNotExamined) {
    int count = 0;
    ParseStatus(
        "123456789"
        "1 2 3 ",
        [&](const StatusError&) { ++count; });
    EXPECT_EQ(count, 1);
}

TEST_F(StatusCheckTests, FourDigits_StopTheReading) {
    int count = 0;
    EXPECT_EQ(ParseStatus("0_status_1 2 3 1234 ", [&](const StatusError&) { ++count; }), StatusOutcome::NumberTooLong);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(ParseStatus("0_status_999 999 999 ", [&](const StatusError&) { ++count; }), StatusOutcome::Complete);
}

using StatusCheckDeathTests = StatusCheckTests;

TEST_F(StatusCheckDeathTests, FourDigits_EndTheProcessWithALine) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CDevApiInterface_Impl& device = DeviceWith({});
    HostLog::EchoToStderr(true);
    EXPECT_DEATH(Check(device, "0_status_1234 "), "CheckStatus: a number in the server's reply is too long");
}

}  // namespace
