// The types of components, as a person who writes a model sees them.
//
// One table holds all that the command knows about a type: the reader takes names from it, the checks its demands, the
// record builder its numbers, `kesto types` prints it. Units are those that the engine's constants imply: mm, m2, L,
// degC, km/h, kWh, days. Costs are in whatever currency the model uses.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "balance_terms.h"
#include "codes.h"
#include "range.h"
#include "required.h"

namespace kesto {

// What a daily series holds. Each kind is one input table of the engine's record.
enum class SeriesKind : std::uint8_t {
    rainfall,
    temperature,
    temperatureMin,
    temperatureMax,
    wind,
    occupancy,
    demandFluctuation,
    uses,
    multiplier,
    threshold,
    demand,
    storage,
    quality,
};
inline constexpr std::size_t kSeriesKinds = 13;

// Those that a group gives its components, but for the uses, of which there are eleven.
inline constexpr std::array kGroupSeries{
    SeriesKind::occupancy,      SeriesKind::demandFluctuation, SeriesKind::rainfall, SeriesKind::temperature,
    SeriesKind::temperatureMin, SeriesKind::temperatureMax,    SeriesKind::wind};

struct SeriesKindInfo {
    SeriesKind kind;
    std::string_view name;        // in the model file
    std::string_view engineWord;  // in the engine's messages
    std::string_view unit;
    std::string_view meaning;
    Range range;
};

// Under whose id a series is filed.
enum class Filing : std::uint8_t { own, group };

struct SeriesNeed {
    SeriesKind kind;
    Filing filing;
    bool isState = false;           // the model writes it too: element 0 is the initial value, default 0
    bool onlyTracing = false;       // needed only when sources are traced
    std::string_view unit = {};     // where it differs from the kind's own
    std::string_view alias = {};    // a better name for it in this type
    std::string_view meaning = {};  // likewise
    std::optional<Range> range = {};
};

// What quality an output sends. Most that carry water have one of their own, demands have none.
enum class Quality : std::uint8_t {
    none,    // -1, or what another component left
    own,     // a number, whatever arrives
    passed,  // that of what arrives, in whole or in part
    mixed,   // of all that arrives, or of what is stored: whatever has no quality spoils it
    spill,   // a load divided by a spill: not a number in steps without one
};
std::string_view toText(Quality quality);

constexpr Quality usualQuality(Carries carries) {
    if (carries == Carries::same) return Quality::passed;
    return carries == Carries::water ? Quality::own : Quality::none;
}

struct Port {
    std::string_view name;
    Carries carries;
    std::string_view meaning;
    std::string_view unit = "L";
    Quality quality = usualQuality(carries);  // of an output
    bool isQualityLeft = false;               // the engine leaves what an earlier component had there
};

// One specification of a brand. The same number can have other names and meanings in other types, but one name always
// stands for one number.
struct Parameter {
    int number;
    std::string_view name;
    std::string_view unit;
    std::string_view meaning;
    Required<Range> range;
    std::optional<double> standard = std::nullopt;  // used where the brand does not give it; none: it must
};

// The size column; kNothing where the type does not read it.
struct Size {
    std::string_view meaning = {};
    std::string_view unit = {};
    Range range = {};
    std::optional<double> standard = std::nullopt;
};

enum Potential : std::uint8_t { kEnergy, kInfiltration, kLosses, kEvaporation, kCapacity, kOperation };
inline constexpr std::size_t kPotentials = 6;

struct PotentialInfo {
    std::string_view name;
    std::string_view engineWord;
    std::string_view unit;
};

inline constexpr int kAnyInputs = -1;

// Of what serves a demand: on which input it is asked, and what it cannot give in a step [L].
struct Service {
    int demandPort = 0;
    double (*unmet)(const BalanceStep& step) = nullptr;  // null: it serves none
    Amounts reads = Amounts::none;
};

inline constexpr int kNoPeak = -1;

// A row of the table. What has no default must be given: a type described by half does not compile.
struct Type {
    Required<std::string_view> name;
    Required<std::string_view> tag;     // of the engine's messages; also accepted as a name
    Required<std::string_view> family;  // stem of the source of its model, its cases and its page
    Required<std::vector<int>> codes;   // one, but for the kinds of appliance
    Required<std::string_view> summary;
    Required<std::vector<Port>> in;
    Required<std::vector<Port>> out;
    Required<Size> size;
    Required<std::vector<Parameter>> parameters;
    Required<std::vector<SeriesNeed>> series;
    Required<std::vector<Potential>> potentials;
    BalanceIdentity balance;
    Service service = {};
    int peakOf = kNoPeak;             // output whose largest step is a figure; 0: of what a recorder receives
    bool anyInputs = false;           // any number of senders on its one input
    int reservoirs = 0;               // stores of type 39 that it works with, found by the group they share
    bool reservoirsOptional = false;  // it runs without them
    bool dailyOnly = false;           // refuses a time step other than one day
    bool usesLatitude = false;
    bool booksDepth = false;  // its potentials are in mm, those of one m2
    bool booksHeat = false;   // its energy is heat, of evaporation or radiation, which nobody pays for or sells

    bool isReport(int output) const { return output == 2 && balance.wiring.secondIsReport; }
    bool isAppliance() const { return codes.size() > 1; }
    // Senders that the engine requires, or kAnyInputs.
    int inputs() const { return anyInputs ? kAnyInputs : static_cast<int>(in.size()); }
};

const std::vector<Type>& allTypes();
const Type* findType(std::string_view nameOrTag);
const Type* findType(int code);
std::vector<std::string_view> typeNames();

// Number of the specification that a parameter's name stands for, whatever the type.
std::optional<int> parameterNumber(std::string_view name);
std::vector<std::string_view> parameterNames();
const Parameter* findParameter(const Type& type, int number);

const SeriesKindInfo& info(SeriesKind kind);
const Range& rangeOf(const SeriesNeed& need);
std::string_view ownUnit(const Type& type, SeriesKind kind);  // of a series that is filed under the component itself
std::optional<SeriesKind> findSeriesKind(std::string_view name);
std::vector<std::string_view> seriesKindNames();
const PotentialInfo& info(Potential potential);

std::vector<std::string_view> portNames(const std::vector<Port>& ports);

// Number (1 or 2) of a port given by name or number; none when the list has no such port.
std::optional<int> portNumber(const std::vector<Port>& ports, std::string_view text);

// Whether an output hands on what reaches the component, be it water or a demand, as links and splitters do: what has
// one kind of input and stores nothing.
bool passesOn(const Type& type, const Port& output);

// Whether what reaches the component is mixed by its qualities.
bool mixesQualities(const Type& type);

// "wastewater" or, where a type has no such port, the number.
std::string portName(const std::vector<Port>& ports, int number);

// Types that ask upstream for what is asked of them, and know the quality of their sources.
bool isReceivingUnit(int typeCode);

// True when the engine may take a component of this type for a source of a receiving unit, and then reads its quality.
bool canBeSource(int typeCode);

// Likewise of a receiving unit of this type.
bool isSourceOf(int typeCode, int unitCode);

}  // namespace kesto
