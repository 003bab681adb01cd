// A model as its files say it: plain data with names turned into indices, before the record is built.
#pragma once

#include <array>
#include <bit>
#include <compare>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "calendar.h"
#include "catalogue.h"
#include "economics.h"
#include "place.h"
#include "units.h"

namespace kesto {

inline constexpr int kUseKinds = 11;

// A CSV file of daily values.
struct TimeTable {
    std::string path;
    std::string timeColumn;  // empty: the first row is the first day of the run
    Place place;             // where the model names it
};

// Where a series' values come from.
struct SeriesSource {
    enum class Kind { constant, column, monthly, weekly };
    Kind kind = Kind::constant;
    double constant = 0;
    std::vector<double> pattern;  // 12 months or 7 days of the week, Monday first
    int table = -1;               // index into Model::tables
    std::string column;
    Conversion conversion;
    double scale = 1, offset = 0;  // after the conversion
    Place place;

    double valueOf(double given) const { return (given * conversion.factor + conversion.offset) * scale + offset; }
    // What its values depend on. Numbers by their bits: a state can be no number, or the other zero.
    using Content = std::tuple<Kind, int, std::string, std::vector<double>, std::array<std::uint64_t, 5>>;
    Content content() const {
        const std::array numbers{constant, conversion.factor, conversion.offset, scale, offset};
        return {kind, table, column, pattern, std::bit_cast<std::array<std::uint64_t, 5>>(numbers)};
    }
    bool isAsGiven() const { return conversion.isIdentity() && scale == 1 && offset == 0; }
};

// Index of a component, group, brand or connection into its vector.
inline std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

using SourceIndex = int;  // into Model::sources
inline constexpr SourceIndex kNoSource = -1;
inline constexpr SourceIndex kBadSource = -2;  // given, but not understood: reported already

// Likewise for what a component names.
inline constexpr int kNone = -1;
inline constexpr int kUnknown = -2;

struct SourcesByKind {
    std::array<SourceIndex, kSeriesKinds> index;
    SourcesByKind() { index.fill(kNoSource); }
    SourceIndex& operator[](SeriesKind kind) { return index[static_cast<std::size_t>(kind)]; }
    SourceIndex operator[](SeriesKind kind) const { return index[static_cast<std::size_t>(kind)]; }
};

struct Brand {
    std::string name;
    int id = 0;
    Capital capital;
    std::map<int, Placed<double>> specifications;
    Place place;
};

struct Group {
    std::string name;
    int id = 0;
    bool potentials = true;  // false: a negative id, under which the engine books nothing
    SourcesByKind series;
    std::array<SourceIndex, kUseKinds> uses;
    Place place;
    Group() { uses.fill(kNoSource); }
};

// One group of stores that a splitter balances.
struct Split {
    std::vector<int> members;  // components
    double beta = 0;
    Place place;
};

struct Component {
    std::string name;
    int id = 0;
    bool idIsFixed = false;
    const Type* type = nullptr;
    int code = 0;
    int group = kNone;
    int brand = kNone;
    double size = 0;
    bool hasSize = false;
    SourcesByKind series;
    std::vector<Split> splits;
    Capital capital;  // its own: see capitalOf
    Place place;
    Place sizePlace;
};

struct Connection {
    int from = -1, fromPort = 1;
    int to = -1, toPort = 1;
    Place place;
};

struct OutputPort {
    int component;
    int port;  // from 1
    auto operator<=>(const OutputPort&) const = default;
};

struct Simulation {
    Day start = 0;
    Day end = 0;           // included
    bool isDated = false;  // start and end could be read
    Day tableStart = 0;    // day of the first row of a table without dates
    double timeStep = 1;
    std::optional<double> latitude;
    bool stopOnInfeasible = false;
    bool traceSources = false;
    bool goesOn = false;  // initial states are those of the day before the start, not of its morning
    Place place;
    std::int64_t days() const { return end - start + 1; }
    int daysBefore() const { return goesOn ? 1 : 0; }  // of which the engine's record holds the states alone
};

// Values that take the place of the model's where it is asked for.
struct Scenario {
    std::string name, title;
    Place place;
};

struct Model {
    std::string path;
    std::string title;
    std::string site;  // where it stands, for people
    std::vector<Scenario> scenarios;
    Simulation simulation;
    Economics economics;
    std::vector<Brand> brands;
    std::vector<Group> groups;
    std::vector<Component> components;
    std::vector<Connection> connections;
    bool isNetworkComplete = true;  // false: components or connections are missing that could not be understood
    std::vector<TimeTable> tables;
    std::vector<std::string> tableFiles;  // of [tables]
    std::string statesFile;               // that initial states were taken from; empty: none
    std::vector<SeriesSource> sources;

    int findBrand(std::string_view name) const;
    int findGroup(std::string_view name) const;
    int findComponent(std::string_view name) const;
    int addSource(SeriesSource source);
    std::vector<std::string_view> brandNames() const;
    std::vector<std::string_view> groupNames() const;
    std::vector<std::string_view> componentNames() const;

    // Kept by the reader.
    std::map<std::string, int, std::less<>> brandIndex, groupIndex, componentIndex;
};

// The unit in which a component books this potential under its group: mm where it works per unit area; none when it
// does not book it.
std::optional<std::string_view> unitBooked(const Component& component, Potential potential);

// What the energy of a group is: of machines, heat, or a sum of both.
struct BookedEnergy {
    const Component* machine = nullptr;  // one that books some; null: none does
    const Component* heat = nullptr;
    bool isHeat() const { return heat && !machine; }
};
std::vector<BookedEnergy> energyOfGroups(const Model& model);

// The source that meets a need of a component, its own or its group's; kNoSource when there is none.
SourceIndex sourceFor(const Model& model, const Component& component, const SeriesNeed& need);

// True when the engine will read this series in a run of this model.
bool isNeeded(const Model& model, const SeriesNeed& need);

// The component's own, or else its brand's.
Capital capitalOf(const Model& model, const Component& component);

// For messages: 'component "wc"' and "tank:overflow".
std::string nameOf(const Component& component);
std::string outputName(const Component& component, int port);

}  // namespace kesto
