// Turns sources of values into the daily floats that the engine reads.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "diagnostics.h"
#include "model.h"
#include "series_cache.h"

namespace kesto {

class SeriesValues {
  public:
    SeriesValues(const Model& model, Diagnostics& diagnostics, SeriesCache* cache = nullptr);

    // One value a step; null when the source cannot be read, which is then reported once. Sources that say the same
    // share one array: of a thousand households most have the same habits.
    std::shared_ptr<const Floats> of(SourceIndex source);

    // The value of the day before the first step; none when the source has no such day, which is reported.
    std::optional<float> dayBefore(SourceIndex source);

    // Line of the file that a step's value comes from; the source itself where it is no column.
    Place placeOf(SourceIndex source, std::size_t step) const;

  private:
    struct Table {
        std::string key;                       // in the cache, with the period
        std::shared_ptr<const CsvFile> csv;    // null: it cannot be read, which has been reported
        std::shared_ptr<const TimeRows> rows;  // null: not fit for the run, likewise
    };
    std::shared_ptr<const Floats> read(const SeriesSource& source);
    template <class T, class Read>
    std::shared_ptr<const T> cached(std::map<std::string, Kept<std::shared_ptr<const T>>>& kept, const std::string& key,
                                    const Read& read);
    Table readTable(const TimeTable& description);
    const Table& tableOf(int index);
    std::shared_ptr<const Floats> fromColumn(const SeriesSource& source);
    void fromPattern(const SeriesSource& source, Floats& values) const;
    Day dayOf(std::size_t step) const { return model_.simulation.start + static_cast<Day>(step); }

    struct Earlier;
    const Model& model_;
    Diagnostics& diagnostics_;
    SeriesCache own_;
    SeriesCache& cache_;
    std::shared_ptr<Earlier> earlier_;  // one day more; made when it is asked for
    std::map<int, Table> tables_;
    std::map<SourceIndex, std::shared_ptr<const Floats>> bySource_;
    std::map<SeriesSource::Content, std::shared_ptr<const Floats>> byContent_;
};

}  // namespace kesto
