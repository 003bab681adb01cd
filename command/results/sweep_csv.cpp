#include "sweep_csv.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "csv_file.h"
#include "csv_table.h"
#include "files.h"

namespace kesto {

namespace {

// As in flows.csv, qualities.csv and states.csv.
std::vector<std::string> headersOf(const SweepShape& shape) {
    std::vector<std::string> headers;
    for (const SweepTable& series : shape.tables) {
        const SeriesTable& table = *series.table;
        const auto add = [&](std::string_view what, std::string_view unit) {
            for (const std::string& name : series.names) {
                headers.push_back(
                    csvCell(fmt::format("{}{}{}", name, what, unit.empty() ? "" : fmt::format(" [{}]", unit))));
            }
        };
        if (table.isOfFlows()) {
            add("", table.unit);
            add("", "quality");
        } else {
            add(table.state == SeriesKind::storage ? ":storage" : ":quality", table.unit);
        }
    }
    return headers;
}

}  // namespace

void writeSweepCsv(const std::string& path, const SweepShape& shape, std::size_t first, std::size_t count,
                   const ValuesAt& at) {
    const std::size_t periods = shape.periods.size(), rows = count * periods;
    const std::vector<std::string> headers = headersOf(shape);
    std::vector<float> values(headers.size() * rows);
    std::vector<CsvColumn> columns;
    for (std::size_t i = 0; i < headers.size(); ++i) {
        float* const column = values.data() + i * rows;
        for (std::size_t member = 0; member < count; ++member) {
            std::copy_n(at(i, member), periods, column + member * periods);
        }
        columns.push_back({headers[i], column});
    }
    const auto begins = [&](std::size_t row) {
        return fmt::format("{},{}", first + row / periods, toText(shape.periods[row % periods].first));
    };
    writeCsvTable(path, rows, begins, columns, "member,date");
}

void joinSweepCsv(const std::vector<std::string>& paths, const std::string& path) {
    std::string whole;
    for (const std::string& part : paths) {
        const std::string text = readFile(part, kLargestTable);
        const std::size_t begin = text.find('\n') + 1;
        if (whole.empty()) whole = text.substr(0, begin);
        if (begin == 0 || whole.compare(0, begin, text, 0, begin) != 0) {
            throw std::runtime_error(fmt::format("cannot read {}: its columns are not those of {}", part, paths[0]));
        }
        whole.append(text, begin);
    }
    writeFile(path, whole);
}

}  // namespace kesto
