#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

#include "files.h"
#include "platform.h"
#include "stored_series_files.h"

namespace kesto {

namespace {

constexpr std::size_t kBlock = 1 << 20;  // bytes read at a time

// The lines of a file one after the other: of the whole file there is never more than one in memory, and a block.
class Lines {
  public:
    explicit Lines(std::string path) : path_(std::move(path)) {
        expectRegular(path_);
        file_ = openFile(path_, "rb");
        if (!file_) throw std::runtime_error(fmt::format("cannot read {}: {}", path_, reasonOf(lastError())));
    }
    ~Lines() { std::fclose(file_); }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    // The view holds until the next call; none at the end of the file.
    std::optional<std::string_view> next() {
        std::size_t searched = begin_;
        for (;;) {
            const std::size_t end = buffer_.find('\n', searched);
            if (end != std::string::npos) {
                const std::string_view line = std::string_view(buffer_).substr(begin_, end - begin_);
                begin_ = end + 1;
                ++number_;
                return line;
            }
            searched = buffer_.size() - begin_;
            buffer_.erase(0, std::exchange(begin_, 0));
            if (!more()) return std::nullopt;
        }
    }

    std::string place() const { return fmt::format("{}:{}", path_, number_); }

  private:
    bool more() {
        const std::size_t had = buffer_.size();
        buffer_.resize(had + kBlock);
        const std::size_t got = std::fread(buffer_.data() + had, 1, kBlock, file_);
        buffer_.resize(had + got);
        if (std::ferror(file_))
            throw std::runtime_error(fmt::format("cannot read {}: {}", path_, reasonOf(lastError())));
        if (got == 0 && had > 0) throw std::runtime_error(fmt::format("{}: the last line has no end", path_));
        return got > 0;
    }

    std::string path_, buffer_;
    std::FILE* file_ = nullptr;
    std::size_t begin_ = 0;
    int number_ = 0;
};

// Cells of a header; names may be quoted.
std::vector<std::string> headerCells(std::string_view line) {
    std::vector<std::string> cells(1);
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (isQuoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
            cells.back() += c;
            ++i;
        } else if (c == '"') {
            isQuoted = !isQuoted;
        } else if (c == ',' && !isQuoted) {
            cells.emplace_back();
        } else {
            cells.back() += c;
        }
    }
    return cells;
}

// "tank:overflow [L]" apart.
std::pair<std::string, std::string> nameAndUnit(const std::string& header) {
    const std::size_t bracket = header.rfind(" [");
    if (bracket == std::string::npos || header.back() != ']') return {header, ""};
    return {header.substr(0, bracket), header.substr(bracket + 2, header.size() - bracket - 3)};
}

// Quantity and name of a column of the states.
std::optional<SeriesEntry> entryOfState(std::string name, std::string unit) {
    for (const auto& [ending, quantity] :
         {std::pair(std::string_view(":storage"), Quantity::storage), {":quality", Quantity::storeQuality}}) {
        if (!name.ends_with(ending)) continue;
        name.resize(name.size() - ending.size());
        return SeriesEntry{quantity, std::move(name), std::move(unit)};
    }
    return std::nullopt;
}

Day dateIn(std::string_view line, const Lines& lines) {
    const std::string_view cell = line.substr(0, line.find(','));
    if (const std::optional<Day> day = parseDay(cell)) return *day;
    throw std::runtime_error(
        fmt::format("{}: expected a date as in 2012-01-31, found \"{}\"", lines.place(), cell.substr(0, 80)));
}

class CsvSeries : public StoredSeries::Files {
  public:
    CsvSeries(const std::string& folder, const std::vector<WrittenFile>& listed) : folder_(folder) {
        for (const char* name : {"flows.csv", "states.csv", "qualities.csv", "potentials.csv"}) {
            if (!find(listed, name)) continue;
            files_.emplace_back(name);
            open(name);
        }
        if (files_.empty()) return;
        Lines lines(joined(folder_, files_.front()));
        lines.next();
        while (const auto line = lines.next())
            days_.push_back(dateIn(*line, lines));
    }

    std::vector<Day> days() const override { return days_; }
    std::vector<SeriesEntry> entries() const override { return entries_; }

    std::vector<std::vector<float>> valuesOf(const std::vector<std::size_t>& wanted) const override {
        std::vector<std::vector<float>> values(wanted.size());
        for (std::size_t file = 0; file < files_.size(); ++file) {
            std::vector<std::pair<std::size_t, std::vector<float>*>> columns;  // ascending
            for (std::size_t i = 0; i < wanted.size(); ++i) {
                const Column& column = columns_[wanted[i]];
                if (column.file == file) columns.emplace_back(column.number, &values[i]);
            }
            std::sort(columns.begin(), columns.end());
            if (!columns.empty()) read(files_[file], columns);
        }
        return values;
    }

  private:
    struct Column {
        std::size_t file, number;
    };
    using Wanted = std::vector<std::pair<std::size_t, std::vector<float>*>>;

    void open(const std::string& name) {
        Lines lines(joined(folder_, name));
        const auto line = lines.next();
        const std::vector<std::string> header = headerCells(line ? *line : std::string_view());
        for (std::size_t i = 1; i < header.size(); ++i) {
            auto [of, unit] = nameAndUnit(header[i]);
            if (unit == "quality") unit.clear();  // it has none of its own
            std::optional<SeriesEntry> entry;
            if (name == "states.csv") {
                entry = entryOfState(of, unit);
            } else {
                const Quantity quantity = name == "flows.csv"       ? Quantity::flow
                                          : name == "qualities.csv" ? Quantity::quality
                                                                    : Quantity::potential;
                entry = SeriesEntry{quantity, of, unit};
            }
            if (!entry) continue;
            entries_.push_back(std::move(*entry));
            columns_.push_back({files_.size() - 1, i});
        }
    }

    // The file is read once, from its start to its end.
    void read(const std::string& name, const Wanted& columns) const {
        Lines lines(joined(folder_, name));
        lines.next();
        for (const Day day : days_) {
            const auto line = lines.next();
            if (!line || dateIn(*line, lines) != day) expectSameDays(name, false);
            takeRow(*line, columns, lines);
        }
        expectSameDays(name, !lines.next());
    }

    void expectSameDays(const std::string& name, bool areSame) const {
        if (areSame) return;
        throw std::runtime_error(
            fmt::format("{}: {} has other dates than the files before it; they are of two runs", folder_, name));
    }

    static void takeRow(std::string_view line, const Wanted& columns, const Lines& lines) {
        std::size_t number = 0, begin = 0;
        for (const auto& [column, values] : columns) {
            for (; number < column; ++number) {
                const void* comma = std::memchr(line.data() + begin, ',', line.size() - begin);
                if (!comma) throw std::runtime_error(fmt::format("{}: it has too few cells", lines.place()));
                begin = static_cast<std::size_t>(static_cast<const char*>(comma) - line.data()) + 1;
            }
            float value = std::numeric_limits<float>::quiet_NaN();
            std::from_chars(line.data() + begin, line.data() + line.size(), value);
            values->push_back(value);
        }
    }

    std::string folder_;
    std::vector<std::string> files_;
    std::vector<Day> days_;
    std::vector<SeriesEntry> entries_;
    std::vector<Column> columns_;  // of each entry
};

}  // namespace

std::unique_ptr<StoredSeries::Files> openCsvSeries(const std::string& folder, const std::vector<WrittenFile>& files) {
    return std::make_unique<CsvSeries>(folder, files);
}

}  // namespace kesto
