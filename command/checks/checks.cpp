#include "checks.h"

#include <fmt/format.h>

namespace kesto {

namespace {

void checkSimulation(const Model& model, Diagnostics& diagnostics) {
    const Simulation& simulation = model.simulation;
    constexpr Day kMostDays = 2000000;
    if (simulation.days() > kMostDays) {
        diagnostics.error("too-large", simulation.place,
                          fmt::format("[simulation]: {} days; expected at most {}", simulation.days(), kMostDays));
    }
    if (!shiftToRecord(simulation.start - simulation.daysBefore(), simulation.end)) {
        diagnostics.error(
            "calendar", simulation.place,
            fmt::format("[simulation]: the engine's calendar starts between 1970 and 2038, and no years in "
                        "it have the leap years of {} to {}",
                        toText(simulation.start), toText(simulation.end)));
    }
}

}  // namespace

void checkModel(const Model& model, SeriesValues& series, Diagnostics& diagnostics) {
    if (model.simulation.days() < 1 || !model.simulation.isDated) return;  // reported by the reader
    checkSimulation(model, diagnostics);
    checkComponents(model, series, diagnostics);
    if (model.isNetworkComplete) checkNetwork(model, diagnostics);
    checkDoubts(model, diagnostics);
    checkRanges(model, series, diagnostics);
    checkSeries(model, series, diagnostics);
    checkValues(model, series, diagnostics);
}

}  // namespace kesto
