#include "results_csv.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <stdexcept>

#include "csv_file.h"
#include "files.h"

namespace kesto {

namespace {

struct Column {
    std::string header;
    const float* values;
    std::size_t stride;  // floats from one step to the next
};

void append(std::string& text, float value) {
    if (std::isnan(value)) {
        text += "nan";
        return;
    }
    char digits[32];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, end);
}

void write(const Results& results, const std::string& path, const std::vector<Column>& columns) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) throw std::runtime_error(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
    std::string text = "date";
    for (const Column& column : columns) {
        text += "," + column.header;
    }
    text += '\n';
    bool good = true;
    for (std::size_t step = 0; step < results.steps; ++step) {
        text += toText(results.dayOf(step));
        for (const Column& column : columns) {
            text += ',';
            append(text, column.values[step * column.stride]);
        }
        text += '\n';
        if (text.size() < 1 << 20) continue;
        good = std::fwrite(text.data(), 1, text.size(), file) == text.size() && good;
        text.clear();
    }
    good = std::fwrite(text.data(), 1, text.size(), file) == text.size() && good;
    good = std::fclose(file) == 0 && good;
    if (!good) throw std::runtime_error(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
}

std::string header(std::string_view name, std::string_view unit) {
    return csvCell(unit.empty() ? std::string(name) : fmt::format("{} [{}]", name, unit));
}

// A signal that never carried a quality needs no column for it.
bool hasQuality(const Flow& flow, std::size_t steps) {
    return std::any_of(flow.signals, flow.signals + steps, [](const Signal& s) { return s.quality != -1.0F; });
}

}  // namespace

std::vector<std::string> writeCsv(const Results& results, const std::string& folder) {
    std::vector<Column> flows, qualities, states, potentials;
    constexpr std::size_t kStride = sizeof(Signal) / sizeof(float);
    for (const Flow& flow : results.flows) {
        flows.push_back({header(flow.name, flow.unit), &flow.signals->quantity, kStride});
        if (hasQuality(flow, results.steps)) {
            qualities.push_back({header(flow.name, "quality"), &flow.signals->quality, kStride});
        }
    }
    for (const State& state : results.states) {
        const std::string name = state.name + (state.kind == SeriesKind::storage ? ":storage" : ":quality");
        states.push_back({header(name, state.unit), state.values, 1});
    }
    for (const PotentialSeries& series : results.potentials) {
        const PotentialInfo& potential = info(series.potential);
        potentials.push_back({header(series.group + ":" + std::string(potential.name), series.unit), series.values, 1});
    }
    std::vector<std::string> written;
    const auto writeOne = [&](const char* name, const std::vector<Column>& columns) {
        if (columns.empty()) return;
        written.push_back(joined(folder, name));
        write(results, written.back(), columns);
    };
    writeOne("flows.csv", flows);
    writeOne("qualities.csv", qualities);
    writeOne("states.csv", states);
    writeOne("potentials.csv", potentials);
    return written;
}

}  // namespace kesto
