#include "catalogue.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace kesto {
namespace {

// Inputs by type code as the engine's dispatch asks for them; -1: not checked.
const std::map<int, int> kInputs{{1, 0},  {2, 0},   {3, 1},   {4, 0},  {5, 0},  {6, 0},   {7, 0},  {8, 0},  {9, 0},
                                 {10, 0}, {11, 1},  {22, 1},  {23, 1}, {24, 1}, {25, 1},  {26, 1}, {27, 1}, {28, 0},
                                 {29, 0}, {30, -1}, {31, -1}, {32, 2}, {33, 1}, {34, -1}, {35, 1}, {36, 1}, {37, 1},
                                 {38, 1}, {39, 2},  {40, 1},  {41, 1}, {42, 1}, {43, 1},  {44, 1}, {45, 0}, {46, 0},
                                 {47, 1}, {48, 1},  {49, 1},  {50, 1}, {51, 1}, {52, 1},  {53, 1}, {54, 0}, {55, 1},
                                 {56, 1}, {57, 1},  {58, 1},  {59, 0}, {60, 0}, {61, 0},  {62, 0}, {63, 1}, {64, 1}};

TEST(Catalogue, HoldsEachTypeOfTheEngineOnce) {
    std::map<int, int> found;
    for (const Type& type : allTypes()) {
        for (const int code : type.codes) {
            EXPECT_TRUE(found.emplace(code, type.inputs).second) << code << " stands twice";
        }
    }
    EXPECT_EQ(found, kInputs);
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
        if (type.inputs >= 0) {
            EXPECT_EQ(static_cast<int>(type.in.size()), type.inputs) << type.name;
        }
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

TEST(Catalogue, KnowsWhatTheEngineTakesForASource) {
    std::set<int> sources;
    for (const auto& [code, inputs] : kInputs) {
        if (canBeSource(code)) sources.insert(code);
    }
    EXPECT_EQ(sources, (std::set<int>{3, 7, 8, 9, 33, 37, 38, 39}));
}

}  // namespace
}  // namespace kesto
