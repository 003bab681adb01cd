#include "results_netcdf.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "diagnostics_json.h"
#include "evaluation_netcdf.h"
#include "files.h"
#include "netcdf_file.h"
#include "netcdf_library.h"
#include "read_options.h"
#include "series_tables.h"

namespace kesto {

namespace {

using Id = NetcdfFile::Id;

struct PotentialVariable {
    std::string name;
    const PotentialInfo* potential;
    std::string_view unit;
    std::vector<const float*> values;  // of each group
};

class Writer {
  public:
    Writer(const Results& results, const std::string& path, int compression)
        : results_(results), file_(path, compression), time_(file_.dimension("time", results.steps)) {}

    void write(const Evaluation& evaluation) {
        describe();
        describeEnd();
        writeTime();
        for (const SeriesTable& table : kSeriesTables) {
            table.isOfFlows() ? writeFlows(table) : writeStates(table);
        }
        writePotentials();
        writeEvaluation(file_, evaluation);
        file_.close();
    }

  private:
    void describe() {
        const Model& model = *results_.model;
        const auto global = [&](const char* name, std::string_view text) {
            file_.attribute(NetcdfFile::kGlobal, name, text);
        };
        global("Conventions", "CF-1.8");
        global("featureType", "timeSeries");
        global("title", model.title.empty() ? model.path : model.title);
        global("source", "KESTO " KESTO_VERSION);
        global("engine_version", KESTO_VERSION);
        global("history", history());
        global("model", model.path);
        std::string sums;
        for (std::size_t i = 0; i < results_.inputs.size(); ++i) {
            const InputFile& input = results_.inputs[i];
            if (i == 0) {
                global("model_sha256", input.sha256);
            } else {
                sums += fmt::format("{}{}  {}", sums.empty() ? "" : "\n", input.sha256, input.path);
            }
        }
        if (!sums.empty()) global("series_sha256", sums);
        if (results_.diagnostics)
            global("warnings",
                   warningRows(*results_.diagnostics).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    }

    std::string history() const {
        std::string history = "kesto run " + results_.model->path;
        if (!results_.read) return history;
        const ReadOptions& read = *results_.read;
        for (const std::string& scenario : read.scenarios) {
            history += " --scenario " + scenario;
        }
        for (const std::string& set : read.set) {
            history += " --set " + set;
        }
        if (!read.from.empty()) history += " --from " + read.from;
        if (!read.to.empty()) history += " --to " + read.to;
        if (!read.statesFrom.empty()) history += " --states-from " + read.statesFrom;
        if (read.approximate) history += " --approximate";
        return history;
    }

    // Whether the run came to its end, and where it stopped.
    void describeEnd() {
        const Model& model = *results_.model;
        const EngineRun& run = results_.run;
        file_.attribute(NetcdfFile::kGlobal, "days_per_step", fmt::format("{}", model.simulation.timeStep));
        file_.attribute(NetcdfFile::kGlobal, "outcome", toText(run.outcome));
        file_.attribute(NetcdfFile::kGlobal, "steps_planned", static_cast<int>(model.simulation.days()));
        file_.attribute(NetcdfFile::kGlobal, "steps_run", static_cast<int>(results_.steps));
        if (run.outcome == Outcome::finished) return;
        file_.attribute(NetcdfFile::kGlobal, "message", explainMessage(run.message, model));
        file_.attribute(NetcdfFile::kGlobal, "stopped_at_step", run.step + 1);
        if (run.step < 0) return;
        file_.attribute(NetcdfFile::kGlobal, "stopped_on", toText(results_.dayOf(static_cast<std::size_t>(run.step))));
    }

    void writeTime() {
        const Id id = file_.integers("time", time_);
        file_.attribute(id, "standard_name", "time");
        file_.attribute(id, "long_name", "day of the step");
        file_.attribute(id, "units", "days since 1970-01-01 00:00:00");
        file_.attribute(id, "calendar", "proleptic_gregorian");
        file_.attribute(id, "axis", "T");
        std::vector<int> days;
        for (std::size_t step = 0; step < results_.steps; ++step) {
            days.push_back(static_cast<int>(results_.dayOf(step)));
        }
        file_.write(id, days);
    }

    // A file of the conventions names one list of series as the identities.
    void writeNames(const std::string& dimension, Id id, const std::vector<std::string>& names) {
        const Id variable = file_.texts(dimension + "_name", id, names);
        file_.attribute(variable, "long_name", "name in the model");
        if (!std::exchange(hasIdentities_, true)) file_.attribute(variable, "cf_role", "timeseries_id");
    }

    Id define(std::string_view variable, std::string_view meaning, std::string_view unit, const std::string& names,
              Id dimension, float missing = NC_FILL_FLOAT) {
        const Id id = file_.floats(std::string(variable), dimension, time_, results_.steps, missing);
        file_.attribute(id, "long_name", meaning);
        file_.attribute(id, "units", unitOrOne(unit));
        file_.attribute(id, "coordinates", names);
        return id;
    }

    static std::string meaningOf(const SeriesTable& table) { return fmt::format("{} step", table.meaning); }

    void writeFlows(const SeriesTable& table) {
        std::vector<const Flow*> flows;
        std::vector<std::string> names, carries;
        for (const Flow& flow : results_.flows) {
            if (flow.unit != table.unit) continue;
            flows.push_back(&flow);
            names.push_back(flow.name);
            carries.emplace_back(toText(flow.carries));
        }
        if (flows.empty()) return;
        const std::string of(table.dimension);
        const Id dimension = file_.dimension(of, flows.size());
        writeNames(of, dimension, names);
        const Id kind = file_.texts(of + "_carries", dimension, carries);
        file_.attribute(kind, "long_name", "what the signal is: water, a demand, or either");
        const Id quantities = define(table.variable, meaningOf(table), table.unit, of + "_name", dimension);
        const Id qualities = define(table.quality, "quality of the flow", "", of + "_name", dimension, kNoQuality);
        writeRows(quantities, flows, [this](const Flow* flow, float* to) {
            std::transform(flow->signals, flow->signals + results_.steps, to,
                           [](const Signal& s) { return s.quantity; });
            return true;
        });
        writeRows(qualities, flows, [this](const Flow* flow, float* to) {
            std::transform(flow->signals, flow->signals + results_.steps, to,
                           [](const Signal& s) { return s.quality; });
            return std::any_of(to, to + results_.steps, [](float q) { return q != kNoQuality; });
        });
    }

    void writeStates(const SeriesTable& table) {
        std::vector<const State*> states;
        std::vector<std::string> names;
        for (const State& state : results_.states) {
            if (state.kind != table.state || state.unit != table.unit) continue;
            states.push_back(&state);
            names.push_back(state.name);
        }
        if (states.empty()) return;
        const std::string of(table.dimension);
        const Id dimension = file_.dimension(of, states.size());
        writeNames(of, dimension, names);
        const Id id = define(table.variable, meaningOf(table), table.unit, of + "_name", dimension);
        writeRows(id, states, [this](const State* state, float* to) {
            std::copy_n(state->values, results_.steps, to);
            return true;
        });
    }

    void writePotentials() {
        std::vector<std::string> groups;
        std::map<std::string, std::size_t> rows;
        for (const PotentialSeries& series : results_.potentials) {
            if (rows.emplace(series.group, groups.size()).second) groups.push_back(series.group);
        }
        if (groups.empty()) return;
        const Id dimension = file_.dimension("group", groups.size());
        writeNames("group", dimension, groups);
        // What each variable holds of each group; null where none is booked.
        std::vector<PotentialVariable> variables;
        std::map<std::string, std::size_t> known;
        for (const PotentialSeries& series : results_.potentials) {
            const PotentialInfo& potential = info(series.potential);
            const std::string name = potentialVariable(potential, series.unit);
            const auto [index, isNew] = known.emplace(name, variables.size());
            if (isNew) variables.push_back({name, &potential, series.unit, std::vector<const float*>(groups.size())});
            variables[index->second].values[rows[series.group]] = series.values;
        }
        for (const auto& [name, potential, unit, values] : variables) {
            const std::string meaning = fmt::format("{} potential [{}]", potential->name, unit);
            writeRows(define(name, meaning, unit, "group_name", dimension), values,
                      [this](const float* from, float* to) {
                          if (from) std::copy_n(from, results_.steps, to);
                          return from != nullptr;
                      });
        }
    }

    // `fill` has an item, and where the values of its row go.
    template <class Item, class Fill>
    void writeRows(Id variable, const std::vector<Item>& items, Fill fill) {
        file_.writeRows(variable, [items, fill](std::size_t row, float* to) { return fill(items[row], to); });
    }

    const Results& results_;
    NetcdfFile file_;
    Id time_;
    bool hasIdentities_ = false;
};

}  // namespace

std::string potentialVariable(const PotentialInfo& potential, std::string_view unit) {
    return std::string(potential.name) + (unit == potential.unit ? "" : "_depth");
}

bool hasNetcdf() {
    return kHasNetcdf;
}

void requireNetcdf() {
    netcdf();
}

std::string writeNetcdf(const Results& results, const Evaluation& evaluation, int compression,
                        const std::string& folder) {
    const std::string path = joined(folder, "results.nc");
    Writer(results, path, compression).write(evaluation);
    return path;
}

}  // namespace kesto
