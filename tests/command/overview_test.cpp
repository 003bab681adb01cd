// The overview of a run: its paths and years say what the account says, on random networks of all types.
#include "overview.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <random>
#include <set>

#include "checks.h"
#include "engine_run.h"
#include "evaluation.h"
#include "flow_graph.h"
#include "model_reader.h"
#include "model_text.h"
#include "record.h"

namespace kesto {
namespace {

TEST(FlowGraph, MixesWhatPassesThrough) {
    FlowGraph graph(5);  // 0 and 1 send to 2, which sends to 3 and 4
    graph.add(0, 2, 30);
    graph.add(1, 2, 10);
    graph.add(2, 3, 36);
    graph.add(4, 2, -4);
    graph.passThroughAll({2});
    EXPECT_EQ(graph.out(0), (std::map<int, double>{{3, 27}, {4, 3}}));
    EXPECT_EQ(graph.out(1), (std::map<int, double>{{3, 9}, {4, 1}}));
    EXPECT_TRUE(graph.in(2).empty());
    EXPECT_TRUE(graph.out(2).empty());
}

TEST(FlowGraph, KeepsWhatGoesRound) {
    FlowGraph graph(4);  // what goes round between 1 and 2 comes out in the end
    graph.add(0, 1, 8);
    graph.add(1, 2, 12);
    graph.add(2, 1, 4);
    graph.add(2, 3, 8);
    graph.passThroughAll({1, 2});
    ASSERT_EQ(graph.out(0).size(), 1U);
    EXPECT_DOUBLE_EQ(graph.out(0).at(3), 8);
}

TEST(RunMonths, PartsOfMonthsAndYears) {
    const RunMonths months(*parseDay("2011-12-31"), 1 + 366 + 31 + 15);
    ASSERT_EQ(months.count(), 15U);
    EXPECT_EQ(months.days(0), 1U);
    EXPECT_EQ(months.days(2), 29U);
    EXPECT_EQ(months.year(13), 2013);
    EXPECT_EQ(months.ofYear(13), 1);
    EXPECT_FALSE(months.isWhole(0));
    EXPECT_TRUE(months.isWhole(1));
    EXPECT_FALSE(months.isWhole(14));
    EXPECT_EQ(byYear(months, std::vector<double>(15, 1)), (std::vector<double>{1, 12, 2}));
    EXPECT_EQ(RunMonths(0, 0).count(), 0U);
}

class RandomOverviews : public testing::Test {
  protected:
    // Of a run that records all outputs, or none but those of the account; nothing where the model is not fit.
    static std::optional<Evaluation> evaluated(const Model& model, SeriesValues& series, bool all) {
        const std::vector<OutputPort> asked = all ? allOutputs(model) : std::vector<OutputPort>();
        const AccountNeeds needs = needsOf(model, series, asked, false);
        Record record(model, series, needs.plan);
        const EngineRun run = runEngine(record);
        if (run.outcome != Outcome::finished) return std::nullopt;
        const Results results = collectResults(model, record, record.shared(), needs.plan, run);
        return evaluate(results, needs, series, {.kept = &asked});
    }

    static bool isPlain(const Account& account) {
        return std::all_of(account.entries.begin(), account.entries.end(), [](const AccountEntry& entry) {
            return std::isfinite(entry.litres) && entry.litres >= 0 && entry.kind != AccountKind::unexplained;
        });
    }

    static double sumOf(const NetworkPaths& paths, PathKind kind) {
        double sum = 0;
        for (const PathNode& node : paths.nodes) {
            const bool isAgain = node.label == "Reused water" || node.label == "Used again";
            if (node.kind == kind && !isAgain) sum += node.litres;
        }
        return sum;
    }

    static void expectNoLoop(const NetworkPaths& paths) {
        std::vector<int> waiting(paths.nodes.size(), 0);
        for (const PathLink& link : paths.links) {
            ++waiting[link.to];
        }
        std::vector<std::size_t> free;
        for (std::size_t i = 0; i < waiting.size(); ++i) {
            if (waiting[i] == 0) free.push_back(i);
        }
        for (std::size_t next = 0; next < free.size(); ++next) {
            for (const PathLink& link : paths.links) {
                if (link.from == free[next] && --waiting[link.to] == 0) free.push_back(link.to);
            }
        }
        EXPECT_EQ(free.size(), paths.nodes.size());
    }

    static void expectAsAccount(const Overview& overview, const Account& account) {
        const double in = account.total(true);
        if (overview.paths.links.empty()) return;
        // Water that comes from outside and goes there without reaching a node, as through a junction, is in both.
        EXPECT_NEAR(sumOf(overview.paths, PathKind::source), in, 1e-5 * in);
        EXPECT_NEAR(sumOf(overview.paths, PathKind::sink), account.total(false), 1e-5 * in);
        EXPECT_LE(overview.paths.nodes.size(), 5U * 9U);
        for (const PathLink& link : overview.paths.links) {
            EXPECT_GT(link.litres, 0);
        }
        expectNoLoop(overview.paths);
    }
};

TEST_F(RandomOverviews, SayWhatTheAccountSays) {
    std::mt19937 random(20261122);
    int compared = 0, years = 0;
    for (int i = 0; i < 60; ++i) {
        const std::string text = test::randomModel(random, 25, test::Wiring::meant);
        Diagnostics diagnostics;
        const std::optional<Model> model = readModel(test::writeModel(text), diagnostics, {});
        if (!model) continue;
        SeriesValues series(*model, diagnostics);
        checkModel(*model, series, diagnostics);
        if (diagnostics.hasErrors()) continue;
        for (const bool all : {true, false}) {
            SCOPED_TRACE(text);
            const auto evaluation = evaluated(*model, series, all);
            if (!evaluation || !isPlain(evaluation->account)) continue;
            expectAsAccount(*evaluation->overview, evaluation->account);
            compared += evaluation->overview->paths.links.empty() ? 0 : 1;
            years += static_cast<int>(evaluation->overview->years.size());
        }
    }
    EXPECT_GE(compared, 20);
    EXPECT_GE(years, 20);
}

}  // namespace
}  // namespace kesto
