#include "results_csv.h"

#include <fmt/format.h>

#include <algorithm>

#include "csv_file.h"
#include "csv_table.h"
#include "files.h"

namespace kesto {

namespace {

std::string header(std::string_view name, std::string_view unit) {
    return csvCell(unit.empty() ? std::string(name) : fmt::format("{} [{}]", name, unit));
}

// A signal that never carried a quality needs no column for it.
bool hasQuality(const Flow& flow, std::size_t steps) {
    return std::any_of(flow.signals, flow.signals + steps, [](const Signal& s) { return s.quality != -1.0F; });
}

}  // namespace

std::vector<std::string> writeCsv(const Results& results, const std::string& folder) {
    std::vector<CsvColumn> flows, qualities, states, potentials;
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
    const auto writeOne = [&](const char* name, const std::vector<CsvColumn>& columns) {
        if (columns.empty()) return;
        written.push_back(joined(folder, name));
        writeCsvTable(
            written.back(), results.steps, [&](std::size_t step) { return toText(results.dayOf(step)); }, columns);
    };
    writeOne("flows.csv", flows);
    writeOne("qualities.csv", qualities);
    writeOne("states.csv", states);
    writeOne("potentials.csv", potentials);
    return written;
}

}  // namespace kesto
