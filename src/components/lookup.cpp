#include "components/lookup.h"

#include <cmath>
#include <limits>

#include "components.h"
#include "errors.h"

namespace {

struct SeriesKind {
    const char* name;
    SeriesEntry* AUEglobals::*table;
    std::int32_t AUEglobals::*count;
};

using G = AUEglobals;
constexpr SeriesKind kSeries[] = {
    {"Rainfall", &G::Rainfall, &G::nRainfall},
    {"Temp", &G::Temp, &G::nTemp},
    {"Tmin", &G::Tmin, &G::nTmin},
    {"Tmax", &G::Tmax, &G::nTmax},
    {"Wind", &G::Wind, &G::nWind},
    {"Multpls", &G::Multpls, &G::nMultpls},
    {"Threshold", &G::Threshold, &G::nThreshold},
    {"Occup", &G::Occup, &G::nOccup},
    {"Dmdflct", &G::Dmdflct, &G::nDmdflct},
    {"InsDmd", &G::InsDmd, &G::nInsDmd},
    {"WatQuant", &G::WatQuant, &G::nWatQuant},
    {"WatQual", &G::WatQual, &G::nWatQual},
    {"NrgPot", &G::NrgPot, &G::nPotComps},
    {"InfPot", &G::InfPot, &G::nPotComps},
    {"LosPot", &G::LosPot, &G::nPotComps},
    {"EvaPot", &G::EvaPot, &G::nPotComps},
    {"CapPot", &G::CapPot, &G::nPotComps},
    {"OprPot", &G::OprPot, &G::nPotComps},
};

bool isInside(const AUEglobals* Globals, std::int32_t step) {
    return step >= 0 && step < Globals->nSteps;
}

// Where the entry stands in its list, or -1 with the error reported.
std::int32_t positionOf(AUEglobals* Globals, const SeriesKind& series, std::int32_t id) {
    const SeriesEntry* const table = Globals->*series.table;
    for (std::int32_t i = 0; i < Globals->*series.count; ++i) {
        if (table[i].id == id) return i;
    }
    fail(Globals, text::kSeriesNotFound, series.name, id);
    return -1;
}

// The values to write to. The count is the host's and is read anew: a host that shrinks a list during a run is told so
// instead of being written to beyond it.
float* writableSeries(AUEglobals* Globals, Series kind, std::int32_t id) {
    const SeriesKind& series = kSeries[static_cast<int>(kind)];
    const std::int32_t position = positionOf(Globals, series, id);
    if (position < 0) return nullptr;
    if (position < Globals->*series.count) return (Globals->*series.table)[position].Value;
    fail(Globals, text::kIndexBeyond, series.name);
    return nullptr;
}

template <typename Amount>
bool add(AUEglobals* Globals, Series kind, std::int32_t key, Amount amount) {
    float* const values = writableSeries(Globals, kind, key);
    if (!values) return false;
    if (!isInside(Globals, Globals->CurStep)) return true;
    float& value = values[Globals->CurStep];
    value = static_cast<float>(static_cast<Amount>(value) + amount);
    return true;
}

}  // namespace

std::int32_t truncated(double value) {
    // The comparison is false for NaN as well.
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

std::int32_t nint(double value) {
    return truncated(value > 0.0 ? value + 0.5 : value - 0.5);
}

const ComponentRow* findRow(AUEglobals* Globals, std::int32_t id) {
    const auto wanted = static_cast<float>(id);
    for (std::int32_t i = 0; i < Globals->nComps; ++i) {
        if (Globals->Net_Compnt[i].id == wanted) return &Globals->Net_Compnt[i];
    }
    fail(Globals, text::kIdNotFound);
    return nullptr;
}

std::optional<float> findSpecification(AUEglobals* Globals, std::int32_t brand, int number, std::int32_t& from) {
    const auto wantedBrand = static_cast<float>(brand);
    const auto wantedNumber = static_cast<float>(number);
    for (std::int32_t i = from; i < Globals->nTechSpecs; ++i) {
        const SpecificationRow& row = Globals->TechSpecs[i];
        if (row.brand == wantedBrand && row.number == wantedNumber && row.select1 == 1.0F && row.select2 == 1.0F) {
            from = i;
            return row.value;
        }
    }
    fail(Globals, text::kSpecificationNotFound, number, brand);
    return std::nullopt;
}

std::optional<float> readMultiplier(AUEglobals* Globals, const InstInfo* Mult, std::int32_t id) {
    if (!Mult || Mult->nUniq() == 0) return 1.0F;
    std::size_t position = 0;
    while (position < Mult->CompntId.size() && Mult->CompntId[position] != id)
        ++position;
    if (position == Mult->CompntId.size()) {
        fail(Globals, text::kNotInSequence);
        return std::nullopt;
    }
    const std::int32_t sequence = Mult->SeqId[position];
    if (sequence == -1) return 1.0F;
    for (const MultiplierSeries& series : Mult->TotNumComp) {
        if (series.index != sequence) continue;
        if (!checkStep(Globals, Globals->CurStep, id)) return std::nullopt;
        return series.Value[static_cast<std::size_t>(Globals->CurStep)];
    }
    fail(Globals, text::kMultiplierNotFound);
    return std::nullopt;
}

float* findSeries(AUEglobals* Globals, Series kind, std::int32_t id) {
    const SeriesKind& series = kSeries[static_cast<int>(kind)];
    const std::int32_t position = positionOf(Globals, series, id);
    return position < 0 ? nullptr : (Globals->*series.table)[position].Value;
}

Signal* findRecord(AUEglobals* Globals, Record kind, std::int32_t id) {
    const bool isLog = kind == Record::Logs;
    const SignalSeriesEntry* const table = isLog ? Globals->Logs : Globals->WatBod;
    const std::int32_t count = isLog ? Globals->nLogs : Globals->nWatBod;
    for (std::int32_t i = 0; i < count; ++i) {
        if (table[i].id == id) return table[i].Signal;
    }
    fail(Globals, text::kRecordNotFound, isLog ? "Logs" : "WatBod");
    return nullptr;
}

const ComponentRow* findReservoir(const AUEglobals* Globals, const ComponentRow* component, const ComponentRow* after) {
    const auto key = static_cast<float>(nint(component->key));
    const ComponentRow* const end = Globals->Net_Compnt + Globals->nComps;
    for (const ComponentRow* row = after ? after + 1 : Globals->Net_Compnt; row != end; ++row) {
        if (row->techid == 39.0F && row->key == key) return row;
    }
    return nullptr;
}

bool checkStep(AUEglobals* Globals, std::int32_t step, std::int32_t id) {
    if (isInside(Globals, step)) return true;
    fail(Globals, text::kStepOutside, Globals->CurStep, id);
    return false;
}

std::optional<float> readNow(AUEglobals* Globals, Series kind, std::int32_t id) {
    const float* const values = findSeries(Globals, kind, id);
    if (!values || !checkStep(Globals, Globals->CurStep, id)) return std::nullopt;
    return values[Globals->CurStep];
}

std::optional<float> readBefore(AUEglobals* Globals, Series kind, std::int32_t id) {
    const float* const values = findSeries(Globals, kind, id);
    const std::int32_t step = Globals->CurStep > 0 ? Globals->CurStep - 1 : Globals->CurStep;
    if (!values || !checkStep(Globals, step, id)) return std::nullopt;
    return values[step];
}

bool store(AUEglobals* Globals, Series kind, std::int32_t id, float value) {
    float* const values = writableSeries(Globals, kind, id);
    if (!values || !checkStep(Globals, Globals->CurStep, id)) return false;
    values[Globals->CurStep] = value;
    return true;
}

bool addPotential(AUEglobals* Globals, Series kind, std::int32_t key, float amount) {
    return add(Globals, kind, key, amount);
}

bool addPotential(AUEglobals* Globals, Series kind, std::int32_t key, double amount) {
    return add(Globals, kind, key, amount);
}
