// Recording an output changes no result: on random networks, the same bits with any set of recordings as with none.
#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <random>
#include <sstream>

#include "checks.h"
#include "engine_run.h"
#include "model_reader.h"
#include "model_text.h"
#include "network.h"
#include "record.h"
#include "results.h"

namespace kesto {
namespace {

struct Observed {
    Outcome outcome;
    std::string message;
    std::vector<float> values;
};

void append(std::vector<float>& values, const float* from, std::size_t count) {
    values.insert(values.end(), from, from + count);
}

// All that a run without recordings shows: potentials, states, what the model's own recorders received.
Observed observe(const Model& model, SeriesValues& series, const std::vector<OutputPort>& wanted,
                 std::size_t* recorded = nullptr) {
    const RecordingPlan plan = planRecordings(model, Network(model), wanted);
    if (recorded) *recorded += plan.logged.size() + plan.fromOwnLog.size();
    Record record(model, series, plan);
    const EngineRun run = runEngine(record);
    Observed observed{run.outcome, run.message, {}};
    const std::size_t steps = record.steps();
    for (const float* potential : record.shared().potentials) {
        append(observed.values, potential, steps);
    }
    for (const StateSeries& state : record.states()) {
        append(observed.values, state.values, steps);
    }
    for (std::size_t i = 0; i < record.logs().size(); ++i) {
        if (record.logs()[i] >= 0) append(observed.values, &record.shared().logs[i]->quantity, 2 * steps);
    }
    for (const Signal* received : record.shared().waterBodies) {
        append(observed.values, &received->quantity, 2 * steps);
    }
    return observed;
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

TEST(Recordings, ChangeNoResult) {
    std::mt19937 random(20120101);
    int runs = 0, traced = 0;
    std::size_t recorded = 0;
    const int trials = test::isLong() ? 1500 : 500;
    for (int trial = 0; trial < trials; ++trial) {
        const std::string text = test::randomModel(random, 3 + trial % 14);
        Diagnostics diagnostics;
        const auto model = readModel(test::writeModel(text), diagnostics);
        ASSERT_TRUE(model);
        SeriesValues series(*model, diagnostics);
        checkModel(*model, series, diagnostics);
        if (diagnostics.hasErrors()) continue;
        ++runs;
        traced += model->simulation.traceSources;
        const Observed without = observe(*model, series, {});
        std::vector<OutputPort> some;
        for (const OutputPort& output : allOutputs(*model)) {
            if (random() % 2 == 0) some.push_back(output);
        }
        for (const auto& wanted : {allOutputs(*model), some}) {
            const Observed with = observe(*model, series, wanted, &recorded);
            ASSERT_EQ(with.outcome, without.outcome) << with.message << "\n" << without.message << "\n" << text;
            ASSERT_TRUE(sameBits(with.values, without.values)) << text;
        }
        ASSERT_EQ(without.outcome, Outcome::finished) << without.message << "\n" << text;
    }
    EXPECT_GT(runs, trials / 5);
    EXPECT_GT(traced, trials / 15);
    EXPECT_GT(recorded, 2 * static_cast<std::size_t>(trials));
    std::cout << runs << " networks ran, " << traced << " of them with traced sources, " << recorded << " recordings\n";
}

}  // namespace
}  // namespace kesto
