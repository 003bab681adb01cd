// The kinds of series that models use.
#ifndef KESTO_COMPONENTS_SERIES_H
#define KESTO_COMPONENTS_SERIES_H

#include <cstdint>

#include "AUEglobals.h"

// The eighteen kinds of series, in the record's order; the potentials last.
enum class Series {
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
    NrgPot,
    InfPot,
    LosPot,
    EvaPot,
    CapPot,
    OprPot,
};

struct SeriesKind {
    const char* name;  // as messages have it
    SeriesEntry* AUEglobals::*table;
    std::int32_t AUEglobals::*count;
};

inline constexpr SeriesKind kSeries[] = {
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
    {"NrgPot", &AUEglobals::NrgPot, &AUEglobals::nPotComps},
    {"InfPot", &AUEglobals::InfPot, &AUEglobals::nPotComps},
    {"LosPot", &AUEglobals::LosPot, &AUEglobals::nPotComps},
    {"EvaPot", &AUEglobals::EvaPot, &AUEglobals::nPotComps},
    {"CapPot", &AUEglobals::CapPot, &AUEglobals::nPotComps},
    {"OprPot", &AUEglobals::OprPot, &AUEglobals::nPotComps},
};

#endif
