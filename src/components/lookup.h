// How a model finds what it needs in the record: its row, its brand's specifications, its multiplier, its series.
//
// Each look-up that fails writes the error's text, sets ErrFlag and gives nothing back; the model returns at once. All
// searches go from the first element, and the first match wins: that settles every tie. Within a call an index finds
// that first match without a scan (lookup_index.h). Ids, brands and numbers are compared as floats, the way the tables
// hold them.
#ifndef KESTO_COMPONENTS_LOOKUP_H
#define KESTO_COMPONENTS_LOOKUP_H

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "AUEglobals.h"
#include "components/series.h"

struct InstInfo;
struct Receiver;
using RCVTOLEAFS = std::vector<Receiver>;

// Rounds a number to an integer, half away from zero. NaN and what 32 bits cannot hold give -2147483648.
std::int32_t nint(double value);
inline std::int32_t nint(float value) {
    return nint(static_cast<double>(value));
}

// Like nint, but cuts the fraction off.
std::int32_t truncated(double value);

const ComponentRow* findRow(AUEglobals* Globals, std::int32_t id);

// The next specification of `brand` with the given number at or after row `from`; `from` becomes its row.
std::optional<float> findSpecification(AUEglobals* Globals, std::int32_t brand, int number, std::int32_t& from);

// A brand's specifications in the order in which a model asks for them. The first is searched from the top of the
// table, each later one from one row before its predecessor: brands are stored in ascending order of number, and rows
// that stand further back are not found.
template <int... Numbers>
std::optional<std::array<float, sizeof...(Numbers)>> readSpecifications(AUEglobals* Globals, std::int32_t brand) {
    std::array<float, sizeof...(Numbers)> values{};
    std::int32_t from = 0;
    std::size_t i = 0;
    const auto read = [&](int number) {
        const auto value = findSpecification(Globals, brand, number, from);
        if (value) values[i++] = *value;
        from = from > 0 ? from - 1 : 0;
        return value.has_value();
    };
    if (!(read(Numbers) && ...)) return std::nullopt;
    return values;
}

template <int... Numbers>
std::optional<std::array<float, sizeof...(Numbers)>> readSpecifications(AUEglobals* Globals, const ComponentRow* row) {
    return readSpecifications<Numbers...>(Globals, nint(row->brand));
}

// The factors, one a step, by which a component's potentials are scaled; null when nothing multiplies them.
std::optional<const float*> findMultiplier(AUEglobals* Globals, const InstInfo* Mult, std::int32_t id);

// The uses of all appliance kinds in a group.
const float* findFrequencies(AUEglobals* Globals, std::int32_t group);

// The next group of a splitter's stores at or after place `from` of the table; -1 without one, which is no error.
std::int32_t findSplit(const AUEglobals* Globals, std::int32_t id, std::int32_t from);

// All values of a series.
float* findSeries(AUEglobals* Globals, Series kind, std::int32_t id);

// The values to write to. The count is the host's and is read anew: a host that shrinks a list during a run is told so
// instead of being written to beyond it.
float* writableSeries(AUEglobals* Globals, Series kind, std::int32_t id);

// The two tables of recorded signals.
enum class Record { Logs, WatBod };

// All signals recorded under an id.
Signal* findRecord(AUEglobals* Globals, Record kind, std::int32_t id);

// The first reservoir after row `after` that shares a component's key; null without one, which is no error. Type
// and key are compared as they stand in the table, unrounded.
const ComponentRow* findReservoir(const AUEglobals* Globals, const ComponentRow* component,
                                  const ComponentRow* after = nullptr);

// The paths of a receiving unit; null without an entry.
const Receiver* findReceiver(const RCVTOLEAFS& Receivers, std::int32_t id);

// Whether a step lies within the series.
bool isInside(const AUEglobals* Globals, std::int32_t step);

// The same; if not, that is an error of the id searched for.
bool checkStep(AUEglobals* Globals, std::int32_t step, std::int32_t id);

#endif
