#include "replaced_values.h"

#include <fmt/format.h>

#include "model_reader.h"

namespace kesto {

void warnOfReplaced(const ModelDocument& document, const ReadOptions& read, const Design& design,
                    Diagnostics& diagnostics) {
    Diagnostics reported;  // with the members
    std::vector<std::vector<std::string_view>> replaced;
    const std::vector<Override> overrides = parseOverrides(read.set, reported);
    replaced.resize(overrides.size());
    const std::vector<std::string> scenarios = design.scenarios();
    for (const std::string& scenario : scenarios) {
        if (scenario.empty()) continue;  // the model itself
        GivenPaths given;
        for (const KeyPath& path : pathsOfScenario(document, scenario)) {
            given.add(path);
        }
        for (std::size_t i = 0; i < overrides.size(); ++i) {
            if (GivenPaths(given).add(overrides[i].path)) replaced[i].push_back(scenario);
        }
    }
    for (std::size_t i = 0; i < overrides.size(); ++i) {
        if (replaced[i].empty()) continue;
        diagnostics.warning(
            "replaced-value", overrides[i].keyPlace,
            fmt::format("it wins over the value of {} {}; give --vary, or change the model, if these "
                        "are meant to keep theirs",
                        replaced[i].size() == 1 ? "scenario" : "the scenarios", listOf(replaced[i], "and")));
    }
}

}  // namespace kesto
