#include "link/Products.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>

namespace {

using Numbers = std::set<std::int32_t>;

/// The product numbers for which `holds` is true, of the known ones and some that nobody knows.
template <class Predicate>
Numbers Where(Predicate holds) {
    Numbers found;
    for (std::int32_t product = -1; product <= 30; ++product) {
        if (holds(product)) {
            found.insert(product);
        }
    }
    return found;
}

template <class Member>
Numbers WhereTrait(Member ProductTraits::* member) {
    return Where([=](std::int32_t product) { return static_cast<bool>(TraitsOf(product).*member); });
}

TEST(ProductsTests, Traits_EachIsThatOfItsProductsAndOfNoOther) {
    EXPECT_EQ(Where(IsTemperatureProduct), (Numbers{7, 8, 9, 14, 16, 17}));
    EXPECT_EQ(Where([](std::int32_t product) { return TraitsOf(product).kind == ChannelKind::Humidity; }), Numbers{15});
    EXPECT_EQ(Where(HasCo2), (Numbers{10, 12, 13}));
    EXPECT_EQ(Where(HasO2), (Numbers{11, 12, 13}));
    EXPECT_EQ(Where(HasAirMode), (Numbers{11, 12, 13}));
    EXPECT_EQ(Where([](std::int32_t product) { return TraitsOf(product).setPointZones > 1; }), Numbers{16});
    EXPECT_EQ(WhereTrait(&ProductTraits::listsParameters), (Numbers{8, 9, 10, 11, 12, 13, 14, 15, 16, 17}));
    EXPECT_EQ(WhereTrait(&ProductTraits::parameterSensors), (Numbers{8, 9, 10, 11, 12, 13, 14, 15}));
    EXPECT_EQ(WhereTrait(&ProductTraits::roomSensor), (Numbers{9, 14}));
    EXPECT_EQ(WhereTrait(&ProductTraits::secondLink), (Numbers{12, 13}));
    EXPECT_EQ(WhereTrait(&ProductTraits::ownAlarms), (Numbers{16, 17}));
}

TEST(ProductsTests, GasKind_IsTheProductsOnlyGasOrThatOfTheMixersController) {
    for (const std::int32_t controller : {0, 1, 2}) {
        SCOPED_TRACE(controller);
        const GasKind mixed = controller == 0 ? GasKind::Co2 : controller == 1 ? GasKind::O2 : GasKind::Neither;
        EXPECT_EQ(GasKindOf({10, controller}), GasKind::Co2);
        EXPECT_EQ(GasKindOf({11, controller}), GasKind::O2);
        EXPECT_EQ(GasKindOf({12, controller}), mixed);
        EXPECT_EQ(GasKindOf({13, controller}), mixed);
        EXPECT_EQ(GasKindOf({15, controller}), GasKind::Neither);
        EXPECT_EQ(GasKindOf({18, controller}), GasKind::Neither);
    }
}

TEST(ProductsTests, SetPoint_IsZone0sAndTheSecondZoneOfProduct16) {
    for (std::int32_t product = 0; product <= 20; ++product) {
        SCOPED_TRACE(product);
        EXPECT_TRUE(HasSetPoint({product, 0}));
        EXPECT_EQ(HasSetPoint({product, 1}), product == 16);
        EXPECT_FALSE(HasSetPoint({product, 2}));
        EXPECT_FALSE(HasSetPoint({product, -1}));
    }
}

}  // namespace
