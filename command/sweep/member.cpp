#include "member.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "checks.h"
#include "evaluation.h"
#include "findings.h"
#include "key_units.h"
#include "model_reader.h"
#include "record.h"
#include "record_choice.h"
#include "results_checks.h"
#include "summary.h"

namespace kesto {

namespace {

ReadOptions optionsOf(const SweepInput& input, std::size_t member, const std::string& baseline) {
    ReadOptions read = input.read;
    read.baseline = baseline;
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

std::set<std::string> filesOf(const Model& model) {
    const std::vector<std::string> paths = inputPaths(model);
    return {paths.begin(), paths.end()};
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

// Of a member that stands for all with its baseline.
void checkBaseline(SweepInput& input, std::size_t member, const Economics& economics, Diagnostics& diagnostics,
                   std::set<std::string>& files) {
    if (economics.baseline.empty() || input.baselines.of(member) != member) return;
    Diagnostics found;
    MemberModel read(input, member, found, economics.baseline);
    checkModel(read.model, read.series, found);
    files.merge(filesOf(read.model));
    if (const Diagnostic* error = found.firstError())
        diagnostics.error("wrong-value", economics.place, withoutBaseline(economics, error->text));
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

MemberModel::MemberModel(SweepInput& input, std::size_t member, Diagnostics& diagnostics, const std::string& baseline)
    : model(readModel(input.document, optionsOf(input, member, baseline), input.design.overridesOf(member, diagnostics),
                      diagnostics)),
      series(model, diagnostics, &input.cache) {}

void checkMember(SweepInput& input, std::size_t member, Diagnostics& diagnostics, std::set<std::string>& files) {
    MemberModel read(input, member, diagnostics);
    checkModel(read.model, read.series, diagnostics);
    files.merge(filesOf(read.model));
    if (diagnostics.hasErrors()) return;
    checkBaseline(input, member, read.model.economics, diagnostics, files);
    const std::vector<OutputPort> asked = parseRecordChoice(read.model, input.record, diagnostics);
    const AccountNeeds needs = needsOf(read.model, read.series, asked, false);
    reportRefusals(read.model, refusedOf(needs.plan, asked), input.record != "all", diagnostics);
    if (!input.shape || diagnostics.hasErrors() || !input.design.changesShape()) return;
    if (shapeOf(input, read, asked, needs) == *input.shape) return;
    diagnostics.error("wrong-value", {std::make_shared<const std::string>("--record " + input.record), 0, 0},
                      "what is recorded must be the same for all members, over the same days; expected no key that "
                      "changes the period, or the type of what is recorded");
}

std::vector<std::string> keyUnits(SweepInput& input, std::size_t member) {
    Diagnostics ignored;
    const Model model = MemberModel(input, member, ignored).model;
    std::vector<std::string> units;
    for (const KeyPath& path : input.design.paths()) {
        units.push_back(unitAt(path, model));
    }
    return units;
}

std::optional<SweepShape> shapeOf(SweepInput& input, std::size_t member) {
    Diagnostics diagnostics;
    MemberModel read(input, member, diagnostics);
    checkModel(read.model, read.series, diagnostics);
    const std::vector<OutputPort> asked = parseRecordChoice(read.model, input.record, diagnostics);
    if (diagnostics.hasErrors()) return std::nullopt;
    return shapeOf(input, read, asked, needsOf(read.model, read.series, asked, false));
}

BaselineCosts runBaseline(SweepInput& input, std::size_t member) {
    Diagnostics ignored;
    const Economics economics = MemberModel(input, member, ignored).model.economics;
    if (economics.baseline.empty()) return {};
    MemberModel read(input, member, ignored, economics.baseline);
    const AccountNeeds needs = needsOf(read.model, read.series, {}, false);
    Record record(read.model, read.series, needs.plan);
    const EngineRun run = runEngineHere(record);
    const Results results = collectResults(read.model, record, record.own(), needs.plan, run);
    const std::string failure = failureOf(results);
    if (!failure.empty()) return {{}, withoutBaseline(economics, failure)};
    return {evaluate(results, needs, read.series, {.hasFiguresOfComponents = false}).costs, {}};
}

MemberResult runMember(SweepInput& input, std::size_t member, const BaselineCosts& baseline,
                       std::span<float> recorded) {
    MemberResult result;
    if (!baseline.failure.empty()) {
        result.outcome = Outcome::failed;
        result.message = baseline.failure;
        return result;
    }
    Diagnostics ignored, found;
    MemberModel read(input, member, ignored);
    const Model& model = read.model;
    const std::vector<OutputPort> asked = parseRecordChoice(model, input.record, ignored);
    const AccountNeeds needs = needsOf(model, read.series, asked, false);
    Record record(model, read.series, needs.plan);
    const EngineRun run = runEngineHere(record);
    result.outcome = run.outcome;
    result.message = explainMessage(run.message, model);
    if (run.outcome != Outcome::finished) return result;
    Results results = collectResults(model, record, record.own(), needs.plan, run);
    checkResults(results, found);
    const Evaluation evaluation =
        evaluate(results, needs, read.series,
                 {.baseline = baseline.costs ? &*baseline.costs : nullptr, .hasFiguresOfComponents = input.allFigures});
    checkAccount(results, evaluation.account, found);
    dropUnasked(input, asked, results);

    FigureList figures(result);
    figures.addFigures(evaluation.figures, true);
    figures.addAccount(evaluation.account);
    for (const Flow& flow : results.flows) {
        figures.add(flow.name, flow.unit, flow.totals.quantity);
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
