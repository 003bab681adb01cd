#include "time_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace kesto {

namespace {

constexpr std::size_t kNoRow = std::numeric_limits<std::size_t>::max();

std::string suggestColumn(const CsvFile& csv, std::string_view name) {
    const std::vector<std::string_view> names(csv.columns().begin(), csv.columns().end());
    return listOf(names, "and") + suggestion(name, names);
}

std::string_view wordsFor(DateForm form, bool from1904) {
    switch (form) {
        case DateForm::dayMonthYear:
            return "dates as day, month, year";
        case DateForm::monthDayYear:
            return "dates as month, day, year";
        case DateForm::countedDays:
            return from1904 ? "days counted from 1904" : "days counted from 1900";
        case DateForm::yearFirst:
            break;
    }
    return "";
}

class Finder {
  public:
    Finder(const CsvFile& csv, std::size_t timeColumn, const Simulation& simulation, Diagnostics& diagnostics)
        : csv_(csv), time_(timeColumn), simulation_(simulation), diagnostics_(diagnostics) {}

    bool find() {
        dates_ = readDates(csv_.rows(), [this](std::size_t row) { return csv_.cell(row, time_); });
        if (dates_.doubt) {
            fail(dates_.doubt->row, fmt::format("column \"{}\": {}", csv_.columns()[time_], dates_.doubt->why));
            return false;
        }
        if (dates_.form == DateForm::countedDays && !findStartOfCount()) return false;
        place();
        return isInOrder() && isWithoutTwins() && isWithoutHoles();
    }

    const std::vector<std::size_t>& rows() const { return rows_; }

    std::vector<std::string> understood() const {
        std::vector<std::string> words;
        const std::string_view form = wordsFor(dates_.form, shift_ != 0);
        if (!form.empty()) {
            words.push_back(
                fmt::format("{} (\"{}\" is {})", form, csv_.cell(rows_.front(), time_), toText(simulation_.start)));
        }
        if (falling_) words.emplace_back("newest day first");
        if (undated_ > 0) {
            words.push_back(fmt::format("{} without a date passed over (line {})",
                                        undated_ == 1 ? "a row" : fmt::format("{} rows", undated_),
                                        csv_.placeOf(firstUndated_, time_).line));
        }
        return words;
    }

  private:
    std::size_t steps() const { return static_cast<std::size_t>(simulation_.days()); }

    void fail(std::size_t row, std::string text) {
        diagnostics_.error("bad-dates", csv_.placeOf(row, time_), std::move(text));
    }

    std::optional<Day> dayOf(std::size_t row) const {
        const std::optional<Day> day = dates_.days[row];
        return day ? std::optional<Day>(*day + shift_) : std::nullopt;
    }

    bool isOfRun(const std::optional<Day>& day) const {
        return day && *day >= simulation_.start && *day <= simulation_.end;
    }

    bool covers(Day shift) const {
        const auto has = [&](Day day) {
            return std::any_of(dates_.days.begin(), dates_.days.end(),
                               [&](const std::optional<Day>& one) { return one && *one + shift == day; });
        };
        return has(simulation_.start) && has(simulation_.end);
    }

    // Most spreadsheets count days from 1900, some from 1904. Only one of the two may give the run its days.
    bool findStartOfCount() {
        const bool from1900 = covers(0), from1904 = covers(kFrom1904);
        if (!from1900 && from1904) shift_ = kFrom1904;
        if (!from1900 || !from1904) return true;
        const auto first = static_cast<std::size_t>(
            std::find_if(dates_.days.begin(), dates_.days.end(), [](const auto& day) { return day.has_value(); }) -
            dates_.days.begin());
        fail(first,
             fmt::format("column \"{}\": \"{}\" is {} counted from 1900 and {} counted from 1904, and the table has "
                         "the days of the run both ways; expected dates such as 2012-01-31",
                         csv_.columns()[time_], csv_.cell(first, time_), toText(*dates_.days[first]),
                         toText(*dates_.days[first] + kFrom1904)));
        return false;
    }

    void place() {
        rows_.assign(steps(), kNoRow);
        for (std::size_t row = 0; row < csv_.rows(); ++row) {
            const std::optional<Day> day = dayOf(row);
            if (!day) {
                if (undated_++ == 0) firstUndated_ = row;
                continue;
            }
            first_ = std::min(first_.value_or(*day), *day);
            last_ = std::max(last_.value_or(*day), *day);
            if (!isOfRun(day)) continue;
            std::size_t& known = rows_[static_cast<std::size_t>(*day - simulation_.start)];
            if (known == kNoRow) {
                known = row;
            } else if (twins_++ == 0) {
                firstTwin_ = row;
            }
        }
    }

    // Oldest first or newest first: anything else was put together wrongly.
    bool isInOrder() {
        std::optional<std::size_t> rise, fall;  // the first row of each
        std::optional<Day> before, beforeLater;
        for (std::size_t row = 0; row < csv_.rows() && (!rise || !fall); ++row) {
            const std::optional<Day> day = dayOf(row);
            if (!isOfRun(day)) continue;
            if (before && *day > *before && !rise) rise = row;
            if (before && *day < *before && !fall) fall = row;
            beforeLater = before;
            before = day;
        }
        falling_ = fall && !rise;
        if (!rise || !fall) return true;
        const std::size_t later = std::max(*rise, *fall);
        fail(later, fmt::format("\"{}\" comes after {}; expected the days in order, oldest or newest first",
                                csv_.cell(later, time_), toText(*beforeLater)));
        return false;
    }

    bool isWithoutTwins() {
        if (twins_ == 0) return true;
        const Day day = *dayOf(firstTwin_);
        const std::size_t other = rows_[static_cast<std::size_t>(day - simulation_.start)];
        fail(firstTwin_,
             fmt::format(
                 "a second row for {}, which line {} has; expected one row for each day{}", toText(day),
                 csv_.placeOf(other, time_).line,
                 twins_ > 1 ? fmt::format("; {} more row{} like this", twins_ - 1, twins_ == 2 ? "" : "s") : ""));
        return false;
    }

    bool isWithoutHoles() {
        std::vector<Day> holes;
        for (std::size_t step = 0; step < rows_.size(); ++step) {
            if (rows_[step] == kNoRow) holes.push_back(simulation_.start + static_cast<Day>(step));
        }
        if (holes.empty()) return true;
        std::string text = fmt::format("no row for {} ({} of the {} days of the run); expected one row for each day",
                                       rangesOf(holes), holes.size(), steps());
        const bool isAtEnd = holes.front() == simulation_.start || holes.back() == simulation_.end;
        if (!first_) text += ", with dates such as 2012-01-31";
        if (first_ && isAtEnd) text += fmt::format("; its rows are for {} to {}", toText(*first_), toText(*last_));
        if (undated_ > 0 && first_) {
            text += fmt::format("; {} no date, the first \"{}\" in line {}",
                                undated_ == 1 ? "a row has" : fmt::format("{} rows have", undated_),
                                csv_.cell(firstUndated_, time_), csv_.placeOf(firstUndated_, time_).line);
        }
        if (csv_.rows() == 0) {
            diagnostics_.error("bad-dates", csv_.headerPlace(), text);
        } else {
            fail(rowAfter(holes.front()), text);
        }
        return false;
    }

    // The row that stands where the first missing one should.
    std::size_t rowAfter(Day hole) const {
        for (std::size_t step = static_cast<std::size_t>(hole - simulation_.start); step < rows_.size(); ++step) {
            if (rows_[step] != kNoRow) return rows_[step];
        }
        return first_ && *first_ > hole ? 0 : csv_.rows() - 1;
    }

    const CsvFile& csv_;
    std::size_t time_;
    const Simulation& simulation_;
    Diagnostics& diagnostics_;
    DateColumn dates_;
    Day shift_ = 0;
    std::vector<std::size_t> rows_;
    std::size_t undated_ = 0, firstUndated_ = 0, twins_ = 0, firstTwin_ = 0;
    std::optional<Day> first_, last_;
    bool falling_ = false;
};

// Without dates the first row is the first day of the model, and each row a day.
std::optional<std::vector<std::size_t>> countedRows(const CsvFile& csv, const Simulation& simulation,
                                                    Diagnostics& diagnostics) {
    const auto steps = static_cast<std::size_t>(simulation.days());
    const Day before = simulation.start - simulation.tableStart;
    if (before >= 0 && csv.rows() >= steps + static_cast<std::size_t>(before)) {
        std::vector<std::size_t> rows(steps);
        for (std::size_t step = 0; step < steps; ++step) {
            rows[step] = static_cast<std::size_t>(before) + step;
        }
        return rows;
    }
    diagnostics.error("bad-dates", csv.place(),
                      fmt::format("{} rows, from {} on; expected one for each day from {} to {}", csv.rows(),
                                  toText(simulation.tableStart), toText(simulation.start), toText(simulation.end)));
    return std::nullopt;
}

}  // namespace

std::optional<TimeRows> TimeRows::of(const CsvFile& csv, const TimeTable& description, const Simulation& simulation,
                                     Diagnostics& diagnostics) {
    TimeRows found;
    std::vector<std::string> understood;
    if (description.timeColumn.empty()) {
        auto rows = countedRows(csv, simulation, diagnostics);
        if (!rows) return std::nullopt;
        found.rows_ = std::move(*rows);
    } else {
        const auto time = csv.column(description.timeColumn);
        if (!time) {
            diagnostics.error("unknown-name", csv.headerPlace(),
                              fmt::format("there is no column \"{}\" for the time; the columns are {}",
                                          description.timeColumn, suggestColumn(csv, description.timeColumn)));
            return std::nullopt;
        }
        Finder finder(csv, *time, simulation, diagnostics);
        if (!finder.find()) return std::nullopt;
        found.rows_ = finder.rows();
        understood = finder.understood();
    }
    csv.noteUnderstood(understood, diagnostics);
    return found;
}

}  // namespace kesto
