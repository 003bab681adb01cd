#include "catalogue.h"

#include <gtest/gtest.h>

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
            EXPECT_TRUE(term.litres) << type.name;
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
