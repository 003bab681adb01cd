#include "catalogue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>

#include "catalogue_tables.h"

namespace kesto {

namespace {

constexpr std::array<SeriesKindInfo, kSeriesKinds> kSeriesKindTable{{
    {SeriesKind::rainfall, "rainfall", "Rainfall", "mm", "rain of the step", range::kFactor},
    {SeriesKind::temperature, "temperature", "Temp", "degC", "mean air temperature", range::kTemperature},
    {SeriesKind::temperatureMin, "temperature_min", "Tmin", "degC", "lowest air temperature", range::kTemperature},
    {SeriesKind::temperatureMax, "temperature_max", "Tmax", "degC", "highest air temperature", range::kTemperature},
    {SeriesKind::wind, "wind", "Wind", "km/h", "wind speed", range::kFactor},
    {SeriesKind::occupancy, "occupancy", "Occup", "persons", "persons present in a group", range::kNotNegative},
    {SeriesKind::demandFluctuation, "demand_fluctuation", "Dmdflct", "-", "factor on the uses of a group",
     range::kNotNegative},
    {SeriesKind::uses, "uses", "Freq", "1/d", "uses a day of each kind of appliance", range::kNotNegative},
    {SeriesKind::multiplier, "multiplier", "Multpls", "-", "factor of a multiplier", range::kAny},
    {SeriesKind::threshold, "threshold", "Threshold", "L", "threshold of a divider or switch", range::kAny},
    {SeriesKind::demand, "demand", "InsDmd", "L", "amount put in from outside", range::kFactor},
    {SeriesKind::storage, "storage", "WatQuant", "L", "stored water at the end of each step", range::kNotNegative},
    {SeriesKind::quality, "quality", "WatQual", "", "stored quality at the end of each step", range::kQuality},
}};

constexpr std::array<PotentialInfo, kPotentials> kPotentialTable{{
    {"energy", "NrgPot", "kWh"},
    {"infiltration", "InfPot", "L"},
    {"losses", "LosPot", "L"},
    {"evaporation", "EvaPot", "L"},
    {"capacity", "CapPot", "cost"},
    {"operation", "OprPot", "cost"},
}};

std::vector<Type> makeTypes() {
    std::vector<Type> all;
    for (const auto field : {tables::users, tables::surfaces, tables::stores, tables::treatment, tables::supply,
                             tables::links, tables::routing, tables::qualityUnits, tables::energyUnits}) {
        std::vector<Type> rows = field();
        all.insert(all.end(), rows.begin(), rows.end());
    }
    return all;
}

const std::map<std::string_view, int>& parameterTable() {
    static const std::map<std::string_view, int> table = [] {
        std::map<std::string_view, int> numbers;
        for (const Type& type : allTypes()) {
            for (const Parameter& parameter : type.parameters) {
                numbers.emplace(parameter.name, parameter.number);
            }
        }
        return numbers;
    }();
    return table;
}

}  // namespace

std::string_view toText(Carries carries) {
    if (carries == Carries::same) return "either";
    return carries == Carries::water ? "water" : "demand";
}

std::string_view toText(Quality quality) {
    switch (quality) {
        case Quality::none:
            return "none";
        case Quality::own:
            return "own";
        case Quality::passed:
            return "passed";
        case Quality::mixed:
            return "mixed";
        case Quality::spill:
            break;
    }
    return "spill";
}

const std::vector<Type>& allTypes() {
    static const std::vector<Type> types = makeTypes();
    return types;
}

const Type* findType(std::string_view nameOrTag) {
    for (const Type& type : allTypes()) {
        if (type.name == nameOrTag || (!type.tag.empty() && type.tag == nameOrTag)) return &type;
    }
    return nullptr;
}

const Type* findType(int code) {
    for (const Type& type : allTypes()) {
        if (std::find(type.codes.begin(), type.codes.end(), code) != type.codes.end()) return &type;
    }
    return nullptr;
}

std::vector<std::string_view> typeNames() {
    std::vector<std::string_view> names;
    for (const Type& type : allTypes()) {
        names.push_back(type.name);
    }
    return names;
}

std::optional<int> parameterNumber(std::string_view name) {
    const auto found = parameterTable().find(name);
    if (found == parameterTable().end()) return std::nullopt;
    return found->second;
}

std::vector<std::string_view> parameterNames() {
    std::vector<std::string_view> names;
    for (const auto& [name, number] : parameterTable()) {
        names.push_back(name);
    }
    return names;
}

const Parameter* findParameter(const Type& type, int number) {
    for (const Parameter& parameter : type.parameters) {
        if (parameter.number == number) return &parameter;
    }
    return nullptr;
}

const SeriesKindInfo& info(SeriesKind kind) {
    return kSeriesKindTable[static_cast<std::size_t>(kind)];
}

const Range& rangeOf(const SeriesNeed& need) {
    return need.range ? *need.range : info(need.kind).range;
}

std::string_view ownUnit(const Type& type, SeriesKind kind) {
    for (const SeriesNeed& need : type.series) {
        if (need.kind == kind && need.filing == Filing::own && !need.unit.empty()) return need.unit;
    }
    return info(kind).unit;
}

std::optional<SeriesKind> findSeriesKind(std::string_view name) {
    for (const SeriesKindInfo& row : kSeriesKindTable) {
        if (row.name == name) return row.kind;
    }
    return std::nullopt;
}

std::vector<std::string_view> seriesKindNames() {
    std::vector<std::string_view> names;
    for (const SeriesKindInfo& row : kSeriesKindTable) {
        names.push_back(row.name);
    }
    return names;
}

const PotentialInfo& info(Potential potential) {
    return kPotentialTable[potential];
}

std::vector<std::string_view> portNames(const std::vector<Port>& ports) {
    std::vector<std::string_view> names;
    for (const Port& port : ports) {
        names.push_back(port.name);
    }
    return names;
}

std::optional<int> portNumber(const std::vector<Port>& ports, std::string_view text) {
    for (std::size_t i = 0; i < ports.size(); ++i) {
        if (ports[i].name == text) return static_cast<int>(i) + 1;
    }
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    if (number < 1 || number > static_cast<int>(ports.size())) return std::nullopt;
    return number;
}

bool passesOn(const Type& type, const Port& output) {
    if (output.carries == Carries::same) return true;
    const bool stores = std::any_of(type.series.begin(), type.series.end(),
                                    [](const SeriesNeed& need) { return need.kind == SeriesKind::storage; });
    return type.inputs() == 1 && type.in[0].carries == output.carries && !stores;
}

bool mixesQualities(const Type& type) {
    return std::any_of(type.out.begin(), type.out.end(),
                       [](const Port& output) { return output.quality == Quality::mixed; });
}

std::string portName(const std::vector<Port>& ports, int number) {
    if (number >= 1 && number <= static_cast<int>(ports.size())) {
        return std::string(ports[static_cast<std::size_t>(number) - 1].name);
    }
    return std::to_string(number);
}

bool isReceivingUnit(int typeCode) {
    return typeCode == code::kServiceReservoir || typeCode == code::kTreatmentPlant;
}

bool isSourceOf(int typeCode, int unitCode) {
    const auto isIn = [typeCode](const auto& codes) {
        return std::find(codes.begin(), codes.end(), typeCode) != codes.end();
    };
    return unitCode == code::kServiceReservoir ? isIn(code::kServiceReservoirSources)
                                               : isIn(code::kTreatmentPlantSources);
}

bool canBeSource(int typeCode) {
    return isSourceOf(typeCode, code::kServiceReservoir) || isSourceOf(typeCode, code::kTreatmentPlant);
}

}  // namespace kesto
