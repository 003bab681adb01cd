// A model as tests write it down: the record's content in owning containers.
#ifndef KESTO_TESTS_MODEL_H
#define KESTO_TESTS_MODEL_H

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "AUEglobals.h"

// The host's series tables, in the record's order. FreqSer holds 11 values a step.
enum class Table {
    FreqSer,
    Rainfall,
    Temp,
    Tmin,
    Tmax,
    Wind,
    Multpls,
    Threshold,
    Occup,
    Dmdflct,
    InsDmd,
    WatQuant,
    WatQual,
};
struct HostTable {
    std::string_view name;
    SeriesEntry* AUEglobals::*entries;
    std::int32_t AUEglobals::*count;
};
inline constexpr std::array<HostTable, 13> kTables = {{
    {"FreqSer", &AUEglobals::FreqSer, &AUEglobals::nFreqSer},
    {"Rainfall", &AUEglobals::Rainfall, &AUEglobals::nRainfall},
    {"Temp", &AUEglobals::Temp, &AUEglobals::nTemp},
    {"Tmin", &AUEglobals::Tmin, &AUEglobals::nTmin},
    {"Tmax", &AUEglobals::Tmax, &AUEglobals::nTmax},
    {"Wind", &AUEglobals::Wind, &AUEglobals::nWind},
    {"Multpls", &AUEglobals::Multpls, &AUEglobals::nMultpls},
    {"Threshold", &AUEglobals::Threshold, &AUEglobals::nThreshold},
    {"Occup", &AUEglobals::Occup, &AUEglobals::nOccup},
    {"Dmdflct", &AUEglobals::Dmdflct, &AUEglobals::nDmdflct},
    {"InsDmd", &AUEglobals::InsDmd, &AUEglobals::nInsDmd},
    {"WatQuant", &AUEglobals::WatQuant, &AUEglobals::nWatQuant},
    {"WatQual", &AUEglobals::WatQual, &AUEglobals::nWatQual},
}};
inline constexpr int kAppliances = 11;

struct NamedSeries {
    std::int32_t id;
    std::vector<float> values;
};

struct Split {
    std::int32_t id;
    std::vector<std::int32_t> members;
    float beta;
};

struct Model {
    std::int32_t StartTime = 0;
    std::int32_t nSteps = 1;
    float TimeStep = 1.0F;
    float Latitude = 0.0F;
    std::int32_t StopOnInfeas = 0;
    std::int32_t BuildTree = 0;
    std::vector<std::int32_t> pots;
    std::vector<SpecificationRow> specifications;
    std::vector<ComponentRow> components;
    std::vector<ConnectionRow> connections;
    std::array<std::vector<NamedSeries>, kTables.size()> series;
    std::vector<Split> splits;

    std::vector<NamedSeries>& table(Table which) { return series[static_cast<std::size_t>(which)]; }
    const std::vector<NamedSeries>& table(Table which) const { return series[static_cast<std::size_t>(which)]; }
};

// One series of the host that is to lie in the memory of another, some elements on.
struct Overlap {
    Table table;
    std::size_t entry;
    Table other;
    std::size_t otherEntry;
    std::size_t elements;  // at most the number of steps
};

inline std::int32_t idOf(const ComponentRow& row) {
    return static_cast<std::int32_t>(row.id);
}

inline void addSpecification(Model& model, float brand, int number, float value) {
    model.specifications.push_back({0, 0, brand, 0, 1, 1, static_cast<float>(number), value, 0});
}

#endif
