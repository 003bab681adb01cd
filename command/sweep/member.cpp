#include "member.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "checks.h"
#include "evaluation.h"
#include "findings.h"
#include "model_reader.h"
#include "record.h"
#include "record_choice.h"
#include "results_checks.h"
#include "summary.h"

namespace kesto {

namespace {

ReadOptions optionsOf(const SweepInput& input, std::size_t member) {
    ReadOptions read = input.read;
    const std::string scenario = input.design.scenarioOf(member);
    if (!scenario.empty()) read.scenarios.push_back(scenario);
    return read;
}

// Of a component that is named without a port, all that there is; else the output.
bool isAsked(const std::string& record, const std::string& component, const std::string& output) {
    if (record == "all") return true;
    const std::string list = "," + record + ",";
    return list.find("," + component + ",") != std::string::npos ||
           (!output.empty() && list.find("," + output + ",") != std::string::npos);
}

void dropUnasked(const SweepInput& input, const std::vector<OutputPort>& asked, Results& results) {
    const std::set<OutputPort> wanted(asked.begin(), asked.end());
    std::erase_if(results.flows, [&](const Flow& flow) {
        return flow.port > 0 ? !wanted.contains(flow.output()) : !isAsked(input.record, flow.name, "");
    });
    std::erase_if(results.states, [&](const State& state) { return !isAsked(input.record, state.name, ""); });
}

// What a member is about to record, without a run.
SweepShape shapeOf(const SweepInput& input, MemberModel& member, const std::vector<OutputPort>& asked,
                   const AccountNeeds& needs) {
    const Record record(member.model, member.series, needs.plan);
    Results results = collectResults(member.model, record, record.shared(), needs.plan, {});
    dropUnasked(input, asked, results);
    return sweepShapeOf(results, input.every);
}

class FigureList {
  public:
    explicit FigureList(MemberResult& result) : result_(result) {}

    void add(std::string name, std::string_view unit, double value) {
        result_.columns.all.push_back({std::move(name), std::string(unit)});
        result_.values.push_back(value);
    }

    void addFigures(const Figures& figures, bool ofNetwork) {
        for (const Figure& figure : figures.rows) {
            if ((figure.component == kOutside) == ofNetwork) {
                add(figures.nameOf(figure), figures.unitOf(figure), figure.value);
            }
        }
    }

    // All kinds, so that members have the same columns whatever their water does.
    void addAccount(const Account& account) {
        for (const bool isIn : {true, false}) {
            for (std::size_t i = 0; i < kAccountKinds; ++i) {
                const auto kind = static_cast<AccountKind>(i);
                if (!(isIn ? info(kind).isIn : info(kind).isOut)) continue;
                add(fmt::format("account.{}.{}", isIn ? "in" : "out", info(kind).name), "L", account.total(isIn, kind));
            }
        }
    }

    void endKey() { result_.columns.key = result_.columns.all.size(); }

  private:
    MemberResult& result_;
};

}  // namespace

MemberModel::MemberModel(SweepInput& input, std::size_t member, Diagnostics& diagnostics)
    : model(readModel(input.document, optionsOf(input, member), input.design.overridesOf(member, diagnostics),
                      diagnostics)),
      series(model, diagnostics, &input.cache) {}

void checkMember(SweepInput& input, std::size_t member, Diagnostics& diagnostics, std::set<std::string>& files) {
    MemberModel read(input, member, diagnostics);
    checkModel(read.model, read.series, diagnostics);
    for (const std::string& path : inputPaths(read.model)) {
        files.insert(path);
    }
    if (diagnostics.hasErrors()) return;
    const std::vector<OutputPort> asked = parseRecordChoice(read.model, input.record, diagnostics);
    const AccountNeeds needs = needsOf(read.model, read.series, asked, false);
    reportRefusals(read.model, refusedOf(needs.plan, asked), input.record != "all", diagnostics);
    if (!input.shape || diagnostics.hasErrors() || !input.design.changesShape()) return;
    if (shapeOf(input, read, asked, needs) == *input.shape) return;
    diagnostics.error("wrong-value", {std::make_shared<const std::string>("--record " + input.record), 0, 0},
                      "what is recorded must be the same for all members, over the same days; expected no key that "
                      "changes the period, or the type of what is recorded");
}

std::optional<SweepShape> shapeOf(SweepInput& input, std::size_t member) {
    Diagnostics diagnostics;
    MemberModel read(input, member, diagnostics);
    checkModel(read.model, read.series, diagnostics);
    const std::vector<OutputPort> asked = parseRecordChoice(read.model, input.record, diagnostics);
    if (diagnostics.hasErrors()) return std::nullopt;
    return shapeOf(input, read, asked, needsOf(read.model, read.series, asked, false));
}

MemberResult runMember(SweepInput& input, std::size_t member, std::span<float> recorded) {
    Diagnostics ignored, found;
    MemberModel read(input, member, ignored);
    const Model& model = read.model;
    const std::vector<OutputPort> asked = parseRecordChoice(model, input.record, ignored);
    const AccountNeeds needs = needsOf(model, read.series, asked, false);
    Record record(model, read.series, needs.plan);
    const EngineRun run = runEngineHere(record);
    MemberResult result;
    result.outcome = run.outcome;
    result.message = explainMessage(run.message, model);
    if (run.outcome != Outcome::finished) return result;
    Results results = collectResults(model, record, record.own(), needs.plan, run);
    checkResults(results, found);
    const Evaluation evaluation = evaluate(results, needs, read.series);
    checkAccount(results, evaluation.account, found);
    dropUnasked(input, asked, results);

    FigureList figures(result);
    figures.addFigures(evaluation.figures, true);
    figures.addAccount(evaluation.account);
    for (const Flow& flow : results.flows) {
        figures.add(flow.name, flow.unit, total(flow, results.steps));
    }
    figures.endKey();
    if (input.allFigures) figures.addFigures(evaluation.figures, false);
    if (input.shape) layOut(*input.shape, results, recorded);
    Findings findings(input.design.tablePath());
    findings.add(member, found);
    if (!found.all().empty()) result.findings = findings.rows().dump();
    return result;
}

}  // namespace kesto
