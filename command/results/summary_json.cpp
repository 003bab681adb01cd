#include "summary_json.h"

#include <filesystem>
#include <nlohmann/json.hpp>

#include "diagnostics_json.h"
#include "evaluation_json.h"
#include "files.h"
#include "read_options.h"
#include "summary.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

Json flowsOf(const Results& results) {
    Json flows = Json::array();
    for (const Flow& flow : results.flows) {
        flows.push_back({{"name", flow.name},
                         {"carries", toText(flow.carries)},
                         {"unit", flow.unit},
                         {"total", flow.totals.quantity}});
    }
    return flows;
}

Json potentialsOf(const Results& results) {
    Json potentials = Json::array();
    for (const PotentialSeries& series : results.potentials) {
        potentials.push_back({{"group", series.group},
                              {"potential", info(series.potential).name},
                              {"unit", series.unit},
                              {"total", series.total}});
    }
    return potentials;
}

// The files under the names that the model has for them: relative to its folder, or absolute.
Json inputsOf(const Results& results) {
    Json inputs = Json::array();
    std::string folder = nameOf(pathOf(results.model->path).parent_path());
    if (!folder.empty()) folder += '/';
    for (std::size_t i = 1; i < results.inputs.size(); ++i) {
        const InputFile& input = results.inputs[i];
        inputs.push_back({{"file", input.path.substr(input.path.starts_with(folder) ? folder.size() : 0)},
                          {"sha256", input.sha256}});
    }
    return inputs;
}

// What the command line has put in place of the file's values.
void addReadOptions(const Results& results, Json& summary) {
    const ReadOptions read = results.read ? *results.read : ReadOptions();
    summary["scenarios"] = read.scenarios;
    summary["set"] = read.set;
    if (!read.statesFrom.empty()) summary["states_from"] = read.statesFrom;
    if (read.approximate) summary["approximate"] = true;
}

std::string absolutePath(const std::string& path) {
    return nameOf(std::filesystem::absolute(pathOf(path)));
}

std::string toText(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string refusalJson(const std::string& model, const Diagnostics& diagnostics) {
    const Json refusal{{"model", model},
                       {"model_file", absolutePath(model)},
                       {"outcome", "not run"},
                       {"errors", errorRows(diagnostics)},
                       {"warnings", warningRows(diagnostics)}};
    return toText(refusal);
}

std::string summaryJson(const Results& results, const Evaluation& evaluation, const std::vector<WrittenFile>& files,
                        const RunCosts* costs) {
    const Model& model = *results.model;
    const Simulation& simulation = model.simulation;
    Json summary{{"model", model.path},
                 {"model_file", absolutePath(model.path)},
                 {"title", model.title},
                 {"start", toText(simulation.start)},
                 {"end", toText(simulation.end)},
                 {"steps", simulation.days()},
                 {"days_per_step", simulation.timeStep},
                 {"components", model.components.size()},
                 {"connections", model.connections.size()},
                 {"outcome", toText(results.run.outcome)},
                 {"steps_run", results.steps},
                 {"message", explainMessage(results.run.message, model)},
                 {"files", fileRows(files)},
                 {"errors", Json::array()},
                 {"warnings", Json::array()},
                 {"flows", flowsOf(results)},
                 {"account", accountRows(evaluation.account)},
                 {"account_gaps", gapRows(evaluation.account)},
                 {"figures", figureRows(evaluation.figures)},
                 {"tanks", tankRows(evaluation.figures)},
                 {"potentials", potentialsOf(results)}};
    if (!model.site.empty()) summary["place"] = model.site;
    addReadOptions(results, summary);
    if (results.diagnostics) {
        summary["errors"] = errorRows(*results.diagnostics);
        summary["warnings"] = warningRows(*results.diagnostics);
    }
    if (!results.inputs.empty()) {
        summary["model_sha256"] = results.inputs.front().sha256;
        summary["inputs"] = inputsOf(results);
    }
    if (evaluation.showsBalance) summary["balance"] = balanceRows(evaluation.balance);
    if (costs) {
        summary["costs"] = {{"read_seconds", costs->readSeconds},
                            {"engine_seconds", costs->engineSeconds},
                            {"write_seconds", costs->writeSeconds},
                            {"peak_bytes", costs->peakBytes}};
    }
    return toText(summary);
}

}  // namespace kesto
