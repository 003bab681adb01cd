#include "series.h"

#include <fmt/format.h>

#include <algorithm>

namespace kesto {

namespace {

// The cells of a column as the values of a run. Each reason to refuse them gives one message.
class ColumnReading {
  public:
    ColumnReading(const CsvFile& csv, std::size_t column, const TimeRows& rows, const SeriesSource& source)
        : csv_(csv), column_(column), rows_(rows), source_(source) {}

    void read(Floats& values) {
        for (std::size_t step = 0; step < values.size(); ++step) {
            const std::string_view cell = csv_.cell(rows_.rowOf(step), column_);
            // Straight to single precision, so that what a run has written reads back as the same bits.
            const auto exact = source_.isAsGiven() ? readFloat(cell, csv_.decimalMark()) : std::nullopt;
            const auto number = exact ? std::nullopt : readNumber(cell, csv_.decimalMark());
            if (exact) {
                values[step] = *exact;
            } else if (number) {
                const double value = source_.valueOf(*number);
                if (!fitsSinglePrecision(value)) tooLarge_.push_back(step);
                if (fitsSinglePrecision(value)) values[step] = static_cast<float>(value);
            } else {
                holes_.push_back(step);
            }
            if (!parted_ && hasThousands(cell, csv_.decimalMark())) parted_ = rows_.rowOf(step);
        }
    }

    bool isGood() const { return holes_.empty() && tooLarge_.empty(); }

    void report(const Simulation& simulation, Diagnostics& diagnostics) const {
        tell("no-number", holes_, "no number", simulation, diagnostics);
        tell("wrong-value", tooLarge_, "a number beyond single precision (3.4e38)", simulation, diagnostics);
        if (!parted_) return;
        const std::string_view cell = csv_.cell(*parted_, column_);
        diagnostics.warning("read-as", csv_.placeOf(*parted_, column_),
                            fmt::format("column \"{}\": \"{}\" is read as {}", csv_.columns()[column_], cell,
                                        *readNumber(cell, csv_.decimalMark())));
    }

  private:
    using Steps = std::vector<std::size_t>;

    void tell(ErrorName name, const Steps& steps, std::string_view what, const Simulation& simulation,
              Diagnostics& diagnostics) const {
        if (steps.empty()) return;
        std::vector<Day> days(steps.size());
        std::transform(steps.begin(), steps.end(), days.begin(),
                       [&](std::size_t step) { return simulation.start + static_cast<Day>(step); });
        const std::size_t row = rows_.rowOf(steps.front());
        const std::string_view cell = csv_.cell(row, column_);
        diagnostics.error(
            name, csv_.placeOf(row, column_),
            fmt::format("column \"{}\" holds {} on {} ({} of the {} days of the run); the first cell {}{}",
                        csv_.columns()[column_], what, rangesOf(days), days.size(), simulation.days(),
                        cell.empty() ? "is empty" : fmt::format("holds \"{}\"", cell),
                        adviceOn(cell, csv_.decimalMark())));
    }

    const CsvFile& csv_;
    std::size_t column_;
    const TimeRows& rows_;
    const SeriesSource& source_;
    Steps holes_, tooLarge_;
    std::optional<std::size_t> parted_;  // the first row of a number whose thousands are parted
};

// The column that a source names; none when there is none, or several.
std::optional<std::size_t> columnOf(const SeriesSource& source, const CsvFile& csv, Diagnostics& diagnostics) {
    const auto column = csv.column(source.column);
    if (!column) {
        const std::vector<std::string_view> names(csv.columns().begin(), csv.columns().end());
        diagnostics.error(
            "unknown-name", source.place,
            fmt::format("there is no column \"{}\" in {}; its columns are {}{}", source.column, toString(csv.place()),
                        listOf(names, "and"), diagnostics.suggest(source.column, [&] { return names; })));
        return std::nullopt;
    }
    if (const std::size_t count = csv.columnsNamed(source.column).size(); count > 1) {
        diagnostics.error("repeated", csv.headerPlace(),
                          fmt::format("{} columns are called \"{}\"; expected one", count, source.column));
        return std::nullopt;
    }
    return column;
}

}  // namespace

SeriesValues::SeriesValues(const Model& model, Diagnostics& diagnostics, SeriesCache* cache)
    : model_(model), diagnostics_(diagnostics), cache_(cache ? *cache : own_) {}

// What the cache has, with what there was to say of it; else what is read, which it keeps unless there was an error.
template <class T, class Read>
std::shared_ptr<const T> SeriesValues::cached(std::map<std::string, Kept<std::shared_ptr<const T>>>& kept,
                                              const std::string& key, const Read& read) {
    const auto known = kept.find(key);
    if (known != kept.end()) {
        diagnostics_.append(known->second.said);
        return known->second.value;
    }
    Diagnostics said;
    std::optional<T> found = read(said);
    diagnostics_.append(said);
    auto value = found ? std::make_shared<const T>(std::move(*found)) : nullptr;
    if (value && !said.hasErrors() && kept.size() < SeriesCache::kMostColumns) kept[key] = {value, std::move(said)};
    return value;
}

std::shared_ptr<const Floats> SeriesValues::of(SourceIndex index) {
    if (index < 0) return nullptr;
    const auto known = bySource_.find(index);
    if (known != bySource_.end()) return known->second;
    const SeriesSource& source = model_.sources[static_cast<std::size_t>(index)];
    const auto [same, isNew] = byContent_.emplace(source.content(), nullptr);
    if (isNew) same->second = read(source);
    return bySource_[index] = same->second;
}

std::shared_ptr<const Floats> SeriesValues::read(const SeriesSource& source) {
    if (source.kind == SeriesSource::Kind::column) return fromColumn(source);
    Floats values(static_cast<std::size_t>(model_.simulation.days()));
    fromPattern(source, values);
    return std::make_shared<const Floats>(std::move(values));
}

struct SeriesValues::Earlier {
    Model model;
    SeriesValues series;

    Earlier(const Model& later, Diagnostics& diagnostics) : model(later), series(model, diagnostics) {
        --model.simulation.start;
        model.simulation.end = model.simulation.start;
    }
};

std::optional<float> SeriesValues::dayBefore(SourceIndex source) {
    if (!earlier_) earlier_ = std::make_shared<Earlier>(model_, diagnostics_);
    const auto values = earlier_->series.of(source);
    return values ? std::optional(values->front()) : std::nullopt;
}

void SeriesValues::fromPattern(const SeriesSource& source, Floats& values) const {
    const auto single = [&](double value) {
        return static_cast<float>(source.isAsGiven() ? value : source.valueOf(value));
    };
    if (source.kind == SeriesSource::Kind::constant) {
        std::fill(values.begin(), values.end(), single(source.constant));
    } else if (source.kind == SeriesSource::Kind::monthly) {
        const auto months = monthsOf(model_.simulation.start, values.size());
        std::transform(months.begin(), months.end(), values.begin(),
                       [&](std::uint8_t month) { return single(source.pattern[month - 1U]); });
    } else {
        for (std::size_t step = 0; step < values.size(); ++step) {
            values[step] = single(source.pattern[static_cast<std::size_t>(weekdayOf(dayOf(step)))]);
        }
    }
}

std::shared_ptr<const Floats> SeriesValues::fromColumn(const SeriesSource& source) {
    const Table& table = tableOf(source.table);
    const auto column = table.rows ? columnOf(source, *table.csv, diagnostics_) : std::nullopt;
    if (!column) return nullptr;
    const std::string key = fmt::format("{}|{}|{}|{}|{}|{}", table.key, source.column, source.conversion.factor,
                                        source.conversion.offset, source.scale, source.offset);
    const auto read = [&](Diagnostics& diagnostics) -> std::optional<Floats> {
        Floats values(static_cast<std::size_t>(model_.simulation.days()));
        ColumnReading reading(*table.csv, *column, *table.rows, source);
        reading.read(values);
        reading.report(model_.simulation, diagnostics);
        return reading.isGood() ? std::optional(std::move(values)) : std::nullopt;
    };
    return cached<Floats>(cache_.columns, key, read);
}

SeriesValues::Table SeriesValues::readTable(const TimeTable& description) {
    const Simulation& simulation = model_.simulation;
    Table table;
    table.key = fmt::format("{}|{}|{}|{}|{}", description.path, description.timeColumn, simulation.start,
                            simulation.end, simulation.tableStart);
    table.csv = cached<CsvFile>(cache_.tables, description.path, [&](Diagnostics& diagnostics) {
        return CsvFile::read(description.path, description.place, diagnostics);
    });
    if (!table.csv || !table.csv->isWhole()) return table;
    table.rows = cached<TimeRows>(cache_.rows, table.key, [&](Diagnostics& diagnostics) {
        return TimeRows::of(*table.csv, description, simulation, diagnostics);
    });
    return table;
}

const SeriesValues::Table& SeriesValues::tableOf(int index) {
    const auto known = tables_.find(index);
    if (known != tables_.end()) return known->second;
    return tables_[index] = readTable(model_.tables[static_cast<std::size_t>(index)]);
}

Place SeriesValues::placeOf(SourceIndex index, std::size_t step) const {
    if (index < 0) return {};
    const SeriesSource& source = model_.sources[static_cast<std::size_t>(index)];
    const auto table = tables_.find(source.table);
    if (source.kind != SeriesSource::Kind::column || table == tables_.end() || !table->second.rows) return source.place;
    const auto column = table->second.csv->column(source.column);
    if (!column) return source.place;
    return table->second.csv->placeOf(table->second.rows->rowOf(step), *column);
}

}  // namespace kesto
