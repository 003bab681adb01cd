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
inline constexpr std::array<std::string_view, 13> kTableNames = {"FreqSer", "Rainfall", "Temp",      "Tmin",  "Tmax",
                                                                 "Wind",    "Multpls",  "Threshold", "Occup", "Dmdflct",
                                                                 "InsDmd",  "WatQuant", "WatQual"};
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
    std::array<std::vector<NamedSeries>, kTableNames.size()> series;
    std::vector<Split> splits;

    std::vector<NamedSeries>& table(Table which) { return series[static_cast<std::size_t>(which)]; }
    const std::vector<NamedSeries>& table(Table which) const { return series[static_cast<std::size_t>(which)]; }
};

#endif
