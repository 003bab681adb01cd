#include "catalogue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>

namespace kesto {
namespace {

// A row that leaves something out does not compile.
template <class Row>
constexpr bool isWholeWithoutBalance = requires {
    Row{.name = "tank",
        .tag = "TN",
        .family = "tank",
        .codes = {code::kTank},
        .summary = "",
        .in = kNothing,
        .out = kNothing,
        .size = kNothing,
        .parameters = kNothing,
        .series = kNothing,
        .potentials = kNothing};
};
template <class Row>
constexpr bool isWholeWithoutSize = requires {
    Row{.name = "tank",
        .tag = "TN",
        .family = "tank",
        .codes = {code::kTank},
        .summary = "",
        .in = kNothing,
        .out = kNothing,
        .parameters = kNothing,
        .series = kNothing,
        .potentials = kNothing,
        .balance = kNoWaterPasses};
};
template <class Row>
constexpr bool isWholeWithAll = requires {
    Row{.name = "tank",
        .tag = "TN",
        .family = "tank",
        .codes = {code::kTank},
        .summary = "",
        .in = kNothing,
        .out = kNothing,
        .size = kNothing,
        .parameters = kNothing,
        .series = kNothing,
        .potentials = kNothing,
        .balance = kNoWaterPasses};
};
static_assert(!isWholeWithoutBalance<Type> && !isWholeWithoutSize<Type> && isWholeWithAll<Type>);

TEST(Catalogue, BalancesWhatHasWater) {
    for (const Type& type : allTypes()) {
        const bool hasPorts = !type.in.empty() || !type.out.empty();
        EXPECT_EQ(type.balance.isOfWater(), hasPorts) << type.name;
        bool hasStore = false;
        for (const SeriesNeed& need : type.series) {
            hasStore = hasStore || need.kind == SeriesKind::storage;
        }
        EXPECT_EQ(hasStore, type.balance.stored != Stored::nothing && type.balance.stored != Stored::underWay)
            << type.name;
        for (const BalanceTerm& term : type.balance.terms) {
            EXPECT_TRUE(term.litres || term.reads != Amounts::none) << type.name;
            EXPECT_FALSE(term.meaning.empty()) << type.name;
        }
    }
}

TEST(Catalogue, NamesTypesOnce) {
    std::set<std::string_view> names;
    for (const Type& type : allTypes()) {
        EXPECT_TRUE(names.insert(type.name).second) << type.name;
        if (!type.tag.empty()) {
            EXPECT_TRUE(names.insert(type.tag).second) << type.tag;
        }
        EXPECT_EQ(findType(type.name), &type);
        EXPECT_FALSE(type.summary.empty()) << type.name;
    }
}

TEST(Catalogue, OneParameterNameIsOneNumber) {
    std::map<std::string_view, int> numbers;
    for (const Type& type : allTypes()) {
        std::set<int> ofType;
        for (const Parameter& parameter : type.parameters) {
            const auto [existing, isNew] = numbers.emplace(parameter.name, parameter.number);
            EXPECT_EQ(existing->second, parameter.number) << parameter.name;
            EXPECT_TRUE(ofType.insert(parameter.number).second) << type.name << " has " << parameter.number << " twice";
            EXPECT_EQ(parameterNumber(parameter.name), parameter.number);
            EXPECT_FALSE(parameter.meaning.empty()) << parameter.name;
        }
    }
}

// Components without a brand share one of standard values: two types must not want different ones.
TEST(Catalogue, StandardsOfOneNumberAgree) {
    std::map<int, double> standards;
    for (const Type& type : allTypes()) {
        for (const Parameter& parameter : type.parameters) {
            if (!parameter.standard) continue;
            EXPECT_EQ(standards.emplace(parameter.number, *parameter.standard).first->second, *parameter.standard)
                << type.name << " " << parameter.name;
        }
    }
}

TEST(Catalogue, StandardsAreWithinTheirRange) {
    for (const Type& type : allTypes()) {
        for (const Parameter& parameter : type.parameters) {
            if (!parameter.standard) continue;
            EXPECT_EQ(parameter.range.beyond(*parameter.standard), Beyond::allowed)
                << type.name << " " << parameter.name;
        }
        EXPECT_EQ(type.size.range.beyond(type.size.standard.value_or(1)), Beyond::allowed) << type.name;
    }
}

TEST(Catalogue, StoresSayWhatLimitsThem) {
    for (const Type& type : allTypes()) {
        bool stores = false;
        for (const SeriesNeed& need : type.series) {
            stores = stores || (need.isState && need.kind == SeriesKind::storage);
        }
        int limits = type.size.range.limitsStore ? 1 : 0;
        for (const Parameter& parameter : type.parameters) {
            limits += parameter.range.limitsStore ? 1 : 0;
        }
        // A detention basin has no highest level.
        EXPECT_EQ(limits, stores && type.name != "detention_basin" ? 1 : 0) << type.name;
    }
}

TEST(Ranges, TellWhatLiesBeyond) {
    EXPECT_EQ(range::kFraction.beyond(-0.1), Beyond::warning);
    EXPECT_EQ(range::kFraction.beyond(0), Beyond::allowed);
    EXPECT_EQ(range::kFraction.beyond(1), Beyond::allowed);
    EXPECT_EQ(range::kFraction.beyond(1.1), Beyond::error);
    EXPECT_EQ(range::kArea.beyond(0), Beyond::warning);
    EXPECT_EQ(range::kArea.beyond(-1), Beyond::error);
    EXPECT_EQ(range::kPositive.beyond(0), Beyond::error);
    EXPECT_EQ(range::kAny.beyond(-1e30), Beyond::allowed);
    EXPECT_EQ(range::kRate.beyond(std::nan("")), Beyond::allowed);
    EXPECT_EQ(toText(range::kArea), "above 0");
    EXPECT_EQ(toText(range::kNotNegative), "0 or more");
    EXPECT_EQ(toText(range::kRate), "0 to 1 in a step");
    EXPECT_EQ(toText(range::kAny), "");
    EXPECT_EQ(withUnit(0.1F, "m2"), "0.1 m2");
    EXPECT_EQ(withUnit(0.5, "-"), "0.5");
}

TEST(Catalogue, PortsHaveNamesOfTheirOwn) {
    for (const Type& type : allTypes()) {
        EXPECT_LE(type.out.size(), 2U) << type.name;
        for (const auto* ports : {&type.in, &type.out}) {
            std::set<std::string_view> names;
            for (const Port& port : *ports) {
                EXPECT_TRUE(names.insert(port.name).second) << type.name << ":" << port.name;
            }
        }
    }
}

TEST(Catalogue, FindsPortsByNameAndNumber) {
    const Type& tank = *findType("tank");
    EXPECT_EQ(portNumber(tank.out, "overflow"), 2);
    EXPECT_EQ(portNumber(tank.out, "2"), 2);
    EXPECT_EQ(portNumber(tank.out, "3"), std::nullopt);
    EXPECT_EQ(portNumber(tank.out, "0"), std::nullopt);
    EXPECT_EQ(portNumber(tank.out, "2x"), std::nullopt);
    EXPECT_EQ(portName(tank.out, 1), "deficit");
}

}  // namespace
}  // namespace kesto
