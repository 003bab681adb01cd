#include "series.h"

#include <fmt/format.h>

namespace kesto {

namespace {

constexpr std::size_t kMostTold = 10;  // cells of a column

}  // namespace

std::shared_ptr<const Floats> SeriesValues::of(SourceIndex index) {
    if (index < 0) return nullptr;
    const auto known = values_.find(index);
    if (known != values_.end()) return known->second;
    const SeriesSource& source = model_.sources[static_cast<std::size_t>(index)];
    const std::string key =
        fmt::format("{}|{}|{}|{}", source.table, source.column, source.conversion.factor, source.conversion.offset);
    const bool isColumn = source.kind == SeriesSource::Kind::column;
    if (isColumn && columns_.contains(key)) return values_[index] = columns_[key];
    Floats values(static_cast<std::size_t>(model_.simulation.days()));
    bool good = true;
    if (isColumn) {
        good = fromColumn(source, values);
    } else {
        fromPattern(source, values);
    }
    auto shared = good ? std::make_shared<const Floats>(std::move(values)) : nullptr;
    if (isColumn) columns_[key] = shared;
    return values_[index] = shared;
}

void SeriesValues::fromPattern(const SeriesSource& source, Floats& values) const {
    for (std::size_t step = 0; step < values.size(); ++step) {
        const Day day = model_.simulation.start + static_cast<Day>(step);
        double value = source.constant;
        if (source.kind == SeriesSource::Kind::monthly) {
            value = source.pattern[static_cast<std::size_t>(dateOf(day).month) - 1];
        } else if (source.kind == SeriesSource::Kind::weekly) {
            value = source.pattern[static_cast<std::size_t>(weekdayOf(day))];
        }
        values[step] = static_cast<float>(value * source.conversion.factor + source.conversion.offset);
    }
}

bool SeriesValues::fromColumn(const SeriesSource& source, Floats& values) {
    const Table& table = tableOf(source.table);
    if (!table.good) return false;
    const auto column = table.csv->column(source.column);
    if (!column) {
        const std::vector<std::string_view> names(table.csv->columns().begin(), table.csv->columns().end());
        diagnostics_.error(source.place, fmt::format("there is no column \"{}\" in {}; its columns are {}{}",
                                                     source.column, toString(table.csv->place()), listOf(names, "and"),
                                                     suggestion(source.column, names)));
        return false;
    }
    std::size_t wrong = 0;
    for (std::size_t step = 0; step < values.size(); ++step) {
        const std::size_t row = table.firstRow + step;
        const std::string_view cell = table.csv->cell(row, *column);
        // Straight to single precision, so that what a run has written reads back as the same bits.
        const auto value = source.conversion.isIdentity() ? parseFloat(cell) : std::nullopt;
        const auto number = value ? std::nullopt : parseNumber(cell);
        if (!value && !number) {
            if (++wrong <= kMostTold) {
                diagnostics_.error(table.csv->placeOf(row, *column),
                                   fmt::format("column \"{}\" holds \"{}\"; expected a number", source.column, cell));
            }
            continue;
        }
        values[step] =
            value ? *value : static_cast<float>(*number * source.conversion.factor + source.conversion.offset);
    }
    if (wrong > kMostTold) {
        diagnostics_.error(source.place, fmt::format("column \"{}\" holds no number on {} of the {} days of the run",
                                                     source.column, wrong, values.size()));
    }
    return wrong == 0;
}

const SeriesValues::Table& SeriesValues::tableOf(int index) {
    const auto known = tables_.find(index);
    if (known != tables_.end()) return known->second;
    const TimeTable& description = model_.tables[static_cast<std::size_t>(index)];
    Table table;
    table.csv = CsvFile::read(description.path, description.place, diagnostics_);
    table.good = table.csv && table.csv->isWhole() && findFirstRow(description, table);
    return tables_[index] = std::move(table);
}

bool SeriesValues::findFirstRow(const TimeTable& description, Table& table) {
    const CsvFile& csv = *table.csv;
    const auto steps = static_cast<std::size_t>(model_.simulation.days());
    const Day start = model_.simulation.start;
    if (description.timeColumn.empty()) {
        const Day before = start - model_.simulation.tableStart;
        if (before >= 0 && csv.rows() >= steps + static_cast<std::size_t>(before)) {
            table.firstRow = static_cast<std::size_t>(before);
            return true;
        }
        diagnostics_.error(csv.place(), fmt::format("{} rows, from {} on; expected one for each day from {} to {}",
                                                    csv.rows(), toText(model_.simulation.tableStart), toText(start),
                                                    toText(model_.simulation.end)));
        return false;
    }
    const auto time = csv.column(description.timeColumn);
    if (!time) {
        const std::vector<std::string_view> names(csv.columns().begin(), csv.columns().end());
        diagnostics_.error(
            csv.headerPlace(),
            fmt::format("there is no column \"{}\" for the time; the columns are {}{}", description.timeColumn,
                        listOf(names, "and"), suggestion(description.timeColumn, names)));
        return false;
    }
    std::size_t row = 0;
    std::optional<Day> first;
    for (; row < csv.rows(); ++row) {
        const auto day = parseDay(csv.cell(row, *time));
        if (!first) first = day;
        if (day && *day == start) break;
    }
    if (row == csv.rows()) {
        diagnostics_.error(csv.rows() > 0 ? csv.placeOf(0, *time) : csv.headerPlace(),
                           fmt::format("no row for {}, the first day of the run{}", toText(start),
                                       first ? fmt::format("; the first row is for {}", toText(*first))
                                             : "; expected dates such as 2012-01-31"));
        return false;
    }
    table.firstRow = row;
    return checkDates(csv, *time, row);
}

// Each row stands for the day after the one before it.
bool SeriesValues::checkDates(const CsvFile& csv, std::size_t timeColumn, std::size_t firstRow) {
    for (Day day = model_.simulation.start; day <= model_.simulation.end; ++day) {
        const std::size_t row = firstRow + static_cast<std::size_t>(day - model_.simulation.start);
        if (row >= csv.rows()) {
            diagnostics_.error(csv.placeOf(csv.rows() - 1, timeColumn),
                               fmt::format("the last row is for {}; expected days up to {}, the end of the "
                                           "run",
                                           toText(day - 1), toText(model_.simulation.end)));
            return false;
        }
        const std::string_view cell = csv.cell(row, timeColumn);
        const auto found = parseDay(cell);
        if (!found || *found != day) {
            diagnostics_.error(csv.placeOf(row, timeColumn),
                               fmt::format("found \"{}\"; expected {}: one row for each day", cell, toText(day)));
            return false;
        }
    }
    return true;
}

Place SeriesValues::placeOf(SourceIndex index, std::size_t step) const {
    if (index < 0) return {};
    const SeriesSource& source = model_.sources[static_cast<std::size_t>(index)];
    const auto table = tables_.find(source.table);
    if (source.kind != SeriesSource::Kind::column || table == tables_.end() || !table->second.good) return source.place;
    const auto column = table->second.csv->column(source.column);
    if (!column) return source.place;
    return table->second.csv->placeOf(table->second.firstRow + step, *column);
}

}  // namespace kesto
