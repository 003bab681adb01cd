#include "compare_parts.h"

namespace kesto {

namespace {

// Of a path on either system: where the files lay is nobody's business who is handed the page.
std::string fileName(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

// As the page of one run has it.
Json rowOf(const MadeOf& made) {
    Json row{{"version", made.version.empty() ? KESTO_VERSION : made.version}};
    if (!made.inputs.empty()) {
        const auto& [model, sha256] = made.inputs.front();
        row.update({{"model", fileName(model)}, {"model_sha256", sha256}});
    }
    for (std::size_t i = 1; i < made.inputs.size(); ++i) {
        const auto& [file, sha256] = made.inputs[i];
        row["inputs"].push_back({{"file", fileName(file)}, {"sha256", sha256}});
    }
    for (const auto& [option, text] : made.options) {
        row["options"].push_back({option, text});
    }
    return row;
}

}  // namespace

Json comparedMade(const Comparison& comparison, const std::vector<std::string>& names, const ComparedSweep* sweep) {
    Json rows = Json::array();
    if (sweep) {
        Json row = rowOf(sweep->made);
        Json design{{"members", sweep->all}, {"sha256", sweep->designSha256}};
        if (!sweep->designTable.empty()) design["table"] = fileName(sweep->designTable);
        row["design"] = std::move(design);
        rows.push_back(std::move(row));
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (comparison.runs[i].made.inputs.empty()) continue;  // a member of the sweep, which stands above
        rows.push_back(rowOf(comparison.runs[i].made));
        rows.back()["run"] = names[i];
    }
    return {{"version", KESTO_VERSION}, {"parts", std::move(rows)}};
}

}  // namespace kesto
