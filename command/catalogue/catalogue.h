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
};

// Under whose id a series is filed.
enum class Filing : std::uint8_t { own, group };

struct SeriesNeed {
    SeriesKind kind;
    Filing filing;
    bool isState = false;           // the model writes it too: element 0 is the initial value, 0 unless given
    bool onlyTracing = false;       // needed only when sources are traced
    std::string_view unit = {};     // where it differs from the kind's own
    std::string_view alias = {};    // a better name for it in this type
    std::string_view meaning = {};  // likewise
};

// What flows through a port: water, or an amount asked for; `same` passes on what arrives.
enum class Carries : std::uint8_t { water, demand, same };
std::string_view toText(Carries carries);  // "water", "demand", "either"

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
};

// One specification of a brand. The same number can have other names and meanings in other types, but one name always
// stands for one number.
struct Parameter {
    int number;
    std::string_view name;
    std::string_view unit;
    std::string_view meaning;
    std::optional<double> standard = std::nullopt;  // used where the brand does not give it; none: it must
};

// The size column. No meaning: the type does not read it.
struct Size {
    std::string_view meaning = {};
    std::string_view unit = {};
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

// What goes in and what comes out, and what a type gains and loses by design. No identity: no water passes it.
struct BalanceIdentity {
    Carries carries = Carries::water;  // what is balanced
    std::string_view identity = {};
    std::string_view gains = {};
    std::string_view losses = {};
    bool secondIsReport = false;  // the second output is part of the first
};

struct Type {
    std::string_view name;
    std::string_view tag;         // of the engine's messages; also accepted as a name
    std::vector<int> codes = {};  // one, but for the kinds of appliance
    std::string_view summary = {};
    int inputs = 0;  // senders that the engine requires, or kAnyInputs
    std::vector<Port> in = {};
    std::vector<Port> out = {};
    Size size = {};
    std::vector<Parameter> parameters = {};
    std::vector<SeriesNeed> series = {};
    std::vector<Potential> potentials = {};
    BalanceIdentity balance = {};
    int reservoirs = 0;               // stores of type 39 that it works with, found by the group they share
    bool reservoirsOptional = false;  // it runs without them
    bool dailyOnly = false;           // refuses a time step other than one day
    bool usesLatitude = false;
    bool booksDepth = false;  // its potentials are in mm, those of one m2

    bool isAppliance() const { return codes.size() > 1; }
};

namespace code {
inline constexpr int kIndependentUse = 9;  // appliance whose water goes into the ground
inline constexpr int kLogger = 26;
inline constexpr int kJunction = 30;
inline constexpr int kMixer = 31;
inline constexpr int kTank = 32;
inline constexpr int kServiceReservoir = 33;
inline constexpr int kMultiplier = 34;
inline constexpr int kSplitter = 36;
inline constexpr int kTreatmentPlant = 37;
inline constexpr int kReservoir = 39;
inline constexpr int kAbstraction = 40;
inline constexpr int kWaterBody = 43;
inline constexpr int kPotableTreatment = 48;
inline constexpr int kDelay = 51;
inline constexpr int kSoilStore = 62;
inline constexpr int kQuotaLimiter = 64;
}  // namespace code

const std::vector<Type>& allTypes();
const Type* findType(std::string_view nameOrTag);
const Type* findType(int code);
std::vector<std::string_view> typeNames();

// Number of the specification that a parameter's name stands for, whatever the type.
std::optional<int> parameterNumber(std::string_view name);
std::vector<std::string_view> parameterNames();
const Parameter* findParameter(const Type& type, int number);

const SeriesKindInfo& info(SeriesKind kind);
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

// True when the engine may take a component of this type for a source of a receiving unit, and then reads its quality.
bool canBeSource(int typeCode);

}  // namespace kesto
