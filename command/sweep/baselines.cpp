#include "baselines.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <type_traits>

#include "model_reader.h"

namespace kesto {

namespace {

// The baseline that members have in each scenario of the design.
std::set<std::string> namesOf(const ModelDocument& document, const ReadOptions& read, const Design& design) {
    std::set<std::string> names;
    for (const std::string& scenario : design.scenarios()) {
        ReadOptions options = read;
        if (!scenario.empty()) options.scenarios.push_back(scenario);
        Diagnostics ignored;
        names.insert(readModel(document, options, {}, ignored).economics.baseline);
    }
    return names;
}

}  // namespace

Baselines::Baselines(const ModelDocument& document, const ReadOptions& read, const Design& design, std::size_t first,
                     std::size_t last)
    : first_(first) {
    const std::set<std::string> names = namesOf(document, read, design);
    const KeyPath key{"economics", "baseline"};
    const bool isVaried = std::find(design.paths().begin(), design.paths().end(), key) != design.paths().end();
    if (!isVaried && names == std::set<std::string>{""}) return;
    std::set<KeyPath> hidden;
    if (!isVaried && names.size() == 1) hidden = pathsOfScenario(document, *names.begin());
    same_ = design.firstAlike(hidden, first, last);
}

std::string toBytes(const BaselineCosts& baseline) {
    static_assert(std::is_trivially_copyable_v<NetworkCosts>);
    if (!baseline.costs) return baseline.failure.empty() ? "" : "!" + baseline.failure;
    std::string bytes(1 + sizeof(NetworkCosts), '=');
    std::memcpy(bytes.data() + 1, &*baseline.costs, sizeof(NetworkCosts));
    return bytes;
}

BaselineCosts baselineCostsFrom(std::string_view bytes) {
    if (bytes.empty()) return {};
    if (bytes.front() == '!') return {{}, std::string(bytes.substr(1))};
    NetworkCosts costs;
    std::memcpy(&costs, bytes.data() + 1, sizeof costs);
    return {costs, {}};
}

}  // namespace kesto
