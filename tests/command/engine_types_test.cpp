// Holds the catalogue's types against the engine's own list of types: the same codes, tags, inputs and sources.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "catalogue.h"
#include "components/type_codes.h"
#include "simulation/dispatch.h"

namespace kesto {
namespace {

// A type's name as the engine's constants spell it.
struct Named {
    std::string_view name;
    int code;
};
constexpr Named kNamed[] = {
    {"local_treatment", ::code::kLocalTreatment},
    {"infiltration_link", ::code::kInfiltrationLink},
    {"soakaway", ::code::kSoakaway},
    {"rainwater_treatment", ::code::kRainwaterTreatment},
    {"greywater_treatment", ::code::kGreywaterTreatment},
    {"wastewater_treatment", ::code::kWastewaterTreatment},
    {"logger", ::code::kLogger},
    {"supply_link", ::code::kSupplyLink},
    {"impervious_surface", ::code::kImperviousSurface},
    {"pervious_surface", ::code::kPerviousSurface},
    {"junction", ::code::kJunction},
    {"mixer", ::code::kMixer},
    {"tank", ::code::kTank},
    {"service_reservoir", ::code::kServiceReservoir},
    {"multiplier", ::code::kMultiplier},
    {"gravity_link", ::code::kGravityLink},
    {"splitter", ::code::kSplitter},
    {"treatment_plant", ::code::kTreatmentPlant},
    {"well", ::code::kWell},
    {"reservoir", ::code::kReservoir},
    {"abstraction", ::code::kAbstraction},
    {"sewer_link", ::code::kSewerLink},
    {"drainage_link", ::code::kDrainageLink},
    {"water_body", ::code::kWaterBody},
    {"hydropower", ::code::kHydropower},
    {"demand_source", ::code::kDemandSource},
    {"green_area", ::code::kGreenArea},
    {"treatment_line", ::code::kTreatmentLine},
    {"potable_treatment", ::code::kPotableTreatment},
    {"quality_from_reservoir", ::code::kQualityFromReservoir},
    {"detention_basin", ::code::kDetentionBasin},
    {"delay", ::code::kDelay},
    {"connector", ::code::kConnector},
    {"threshold_divider", ::code::kThresholdDivider},
    {"pumped_storage", ::code::kPumpedStorage},
    {"pump", ::code::kPump},
    {"quality_setter", ::code::kQualitySetter},
    {"quality_switch", ::code::kQualitySwitch},
    {"membrane", ::code::kMembrane},
    {"solar_panel", ::code::kSolarPanel},
    {"net_radiation", ::code::kNetRadiation},
    {"wind_turbine", ::code::kWindTurbine},
    {"soil_store", ::code::kSoilStore},
    {"threshold_switch", ::code::kThresholdSwitch},
    {"quota_limiter", ::code::kQuotaLimiter},
};

TEST(EngineTypes, NamesAreThoseOfTheCatalogue) {
    std::set<std::string_view> named;
    for (const auto& [name, code] : kNamed) {
        const Type* const type = findType(name);
        ASSERT_TRUE(type) << name;
        EXPECT_EQ(type->codes, std::vector{code}) << name;
        named.insert(name);
    }
    for (const Type& type : allTypes())
        EXPECT_TRUE(type.isAppliance() || named.contains(type.name)) << type.name;
}

// What the command may say about a run that goes on rests on it.
TEST(EngineTypes, QualitiesThatAreLeftAreThoseOfTheCatalogue) {
    for (const Type& type : allTypes()) {
        const ComponentType* const own = ::findType(type.codes.front());
        for (std::size_t port = 0; port < type.out.size(); ++port) {
            bool isLeft = false;
            for (const Form* const form : own ? own->forms : std::span<const Form* const>{}) {
                if (form && form->part == Part::Outputs) isLeft = port == 1 && form->sets != Sets::Both;
            }
            EXPECT_EQ(type.out[port].isQualityLeft, isLeft) << type.name << ':' << port + 1;
        }
    }
}

// The catalogue's rows have their codes from the command's list; the kinds of appliance are not named there.
TEST(EngineTypes, AppliancesHaveTheSameCodes) {
    static_assert(code::kOutdoorUse == ::code::kOutdoorUse);
    static_assert(code::kIndependentUse == ::code::kIndependentUse);
    for (const int code : code::kAppliances) {
        const ComponentType* const engine = ::findType(code);
        ASSERT_TRUE(engine) << code;
        EXPECT_EQ(engine->tag, std::string(findType("appliance")->tag)) << code;
    }
}

TEST(EngineTypes, TagsAndInputsAreThoseOfTheCatalogue) {
    std::set<int> codes;
    for (const ComponentType& engine : componentTypes()) {
        const Type* const type = findType(engine.code);
        ASSERT_TRUE(type) << engine.code;
        EXPECT_EQ(type->tag, engine.tag);
        EXPECT_EQ(type->inputs(), engine.inputs) << type->name;
        codes.insert(engine.code);
    }
    // The two that the engine's driver computes itself.
    codes.insert({::code::kJunction, ::code::kMixer});
    for (const Type& type : allTypes()) {
        for (const int code : type.codes)
            EXPECT_EQ(codes.erase(code), 1U) << type.name;
    }
    EXPECT_TRUE(codes.empty());
}

TEST(EngineTypes, SourcesAreThoseOfTheCatalogue) {
    std::string leafTypes;
    for (const ComponentType& type : componentTypes()) {
        if (type.isReceiver()) leafTypes += fmt::format("{} {},", type.leafTypes[0], type.leafTypes[1]);
    }
    for (int code = 1; code <= ::code::kQuotaLimiter; ++code)
        EXPECT_EQ(canBeSource(code), leafTypes.find(std::to_string(code)) != std::string::npos) << code;
}

}  // namespace
}  // namespace kesto
