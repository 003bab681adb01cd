// How a model finds what it needs in the record: its row, its brand's specifications, its multiplier, its series.
//
// Each look-up that fails writes the error's text, sets ErrFlag and gives nothing back; the model returns at once. All
// searches go from the first element, and the first match wins: that settles every tie. Ids, brands and numbers are
// compared as floats, the way the tables hold them.
#ifndef KESTO_COMPONENTS_LOOKUP_H
#define KESTO_COMPONENTS_LOOKUP_H

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "AUEglobals.h"
#include "components.h"
#include "components/row_finder.h"
#include "components/series.h"

// Cuts the fraction off a number. NaN and what 32 bits cannot hold give -2147483648.
inline std::int32_t truncated(double value) {
    // The comparison is false for NaN as well.
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

// Like truncated, but rounds, half away from zero.
inline std::int32_t nint(double value) {
    return truncated(value > 0.0 ? value + 0.5 : value - 0.5);
}
inline std::int32_t nint(float value) {
    return nint(static_cast<double>(value));
}

// The two tables of recorded signals.
enum class Record { Logs, WatBod };

template <typename Row>
std::int32_t idOf(const Row& row) {
    return row.id;
}
using SeriesFinder = RowFinder<SeriesEntry, idOf<SeriesEntry>>;

// All values of a series, by a finder for series of its kind; null only where there are no steps. Nothing with the
// error reported.
std::optional<float*> findSeries(AUEglobals* Globals, Series kind, const SeriesFinder& finder, std::int32_t id);

// The tables of a record whose outputs are allocated, and what set-up made of the network.
class Lookups {
  public:
    // By an index made here, or by a scan of the rows as they are at each look-up.
    enum class By { Index, Scan };

    // Without multipliers `Mult` is null or empty, without traced sources `Receivers` is null. May throw
    // std::bad_alloc.
    Lookups(AUEglobals* Globals, const InstInfo* Mult, const RCVTOLEAFS* Receivers, By by = By::Index);

    const ComponentRow* findRow(std::int32_t id) const;

    // The next specification of `brand` with the given number at or after row `from`; `from` becomes its row.
    std::optional<float> findSpecification(std::int32_t brand, int number, std::int32_t& from) const;

    // A brand's specifications in the order in which a model asks for them. The first is searched from the top of the
    // table, each later one from one row before its predecessor: brands are stored in ascending order of number, and
    // rows that stand further back are not found.
    template <int... Numbers>
    std::optional<std::array<float, sizeof...(Numbers)>> readSpecifications(std::int32_t brand) const {
        std::array<float, sizeof...(Numbers)> values{};
        std::int32_t from = 0;
        std::size_t i = 0;
        const auto read = [&](int number) {
            const auto value = findSpecification(brand, number, from);
            if (value) values[i++] = *value;
            from = from > 0 ? from - 1 : 0;
            return value.has_value();
        };
        if (!(read(Numbers) && ...)) return std::nullopt;
        return values;
    }

    // The factors, one a step, by which a component's potentials are scaled; null when nothing multiplies them.
    std::optional<const float*> findMultiplier(std::int32_t id) const;

    // The uses of all appliance kinds in a group; null only where there are no steps.
    std::optional<const float*> findFrequencies(std::int32_t group) const;

    // The next group of a splitter's stores at or after place `from` of the table; -1 without one, which is no error.
    std::int32_t findSplit(std::int32_t id, std::int32_t from) const { return splits_.first(id, from); }

    // All values of a series; null only where there are no steps.
    std::optional<float*> findSeries(Series kind, std::int32_t id) const;

    // The values to write to. The count is the host's and is read anew: if a host shrinks a list during a run, that is
    // an error, and nothing beyond the list is written.
    std::optional<float*> writableSeries(Series kind, std::int32_t id) const;

    // All signals recorded under an id. The count is read anew, as above.
    Signal* findRecord(Record kind, std::int32_t id) const;

    // The first reservoir after row `after` that shares a component's key; null without one, which is no error.
    // Type and key are compared as they stand in the table, unrounded.
    const ComponentRow* findReservoir(const ComponentRow* component, const ComponentRow* after = nullptr) const;

    // Whether sources are traced, and the paths of a receiving unit to them.
    bool tracesSources() const { return Receivers_ != nullptr; }
    const Receiver* findReceiver(std::int32_t id) const;

  private:
    // The potentials all have the same ids and share one finder.
    const SeriesFinder& ofKind(Series kind) const;

    static float rowId(const ComponentRow& row) { return row.id; }
    static float reservoirKey(const ComponentRow& row);
    static std::pair<float, float> specificationKey(const SpecificationRow& row);
    static std::int32_t itself(const std::int32_t& id) { return id; }

    using RecordFinder = RowFinder<SignalSeriesEntry, idOf<SignalSeriesEntry>>;

    AUEglobals* Globals_;
    const InstInfo* Mult_;
    const RCVTOLEAFS* Receivers_;
    RowFinder<ComponentRow, rowId> rows_;
    RowFinder<ComponentRow, reservoirKey> reservoirs_;
    RowFinder<SpecificationRow, specificationKey> specifications_;
    std::vector<SeriesFinder> series_;  // by kind
    SeriesFinder frequencies_;
    RecordFinder logs_;
    RecordFinder waterBodies_;
    RowFinder<SplitEntry, idOf<SplitEntry>> splits_;
    RowFinder<std::int32_t, itself> sequence_;  // places in the order of calculation
    RowFinder<Receiver, idOf<Receiver>> receivers_;
};

// Whether a step lies within the series.
inline bool isInside(const AUEglobals* Globals, std::int32_t step) {
    return step >= 0 && step < Globals->nSteps;
}

// The same; if not, that is an error of the id searched for.
bool checkStep(AUEglobals* Globals, std::int32_t step, std::int32_t id);

#endif
