#include "network.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <set>

#include "checks.h"
#include "engine_run.h"
#include "model_reader.h"
#include "model_text.h"
#include "record.h"
#include "recordings.h"

namespace kesto {
namespace {

using Said = std::set<std::string>;

// A waterworks behind which a flow forks and meets again so many times.
std::string ladder(int rungs) {
    std::string text =
        "kesto_model = 1\n[simulation]\nstart = 2012-01-01\nend = 2012-01-02\ntrace_sources = true\n"
        "[brands.works]\ndaily_capacity = 9\nloss_fraction = 0\n";
    const auto component = [&](const std::string& name, const char* type, const char* more = "") {
        text += fmt::format("[[components]]\nname = \"{}\"\ntype = \"{}\"\n{}", name, type, more);
    };
    std::string connections;
    const auto connect = [&](const std::string& from, const std::string& to) {
        connections += fmt::format("[[connections]]\nfrom = \"{}\"\nto = \"{}\"\n", from, to);
    };
    component("asked", "demand_source", "demand = 1\n");
    component("works", "treatment_plant", "brand = \"works\"\n");
    connect("asked", "works");
    std::string last = "works:request";
    for (int i = 0; i < rungs; ++i) {
        component(fmt::format("fork{}", i), "connector");
        component(fmt::format("side{}", i), "connector");
        component(fmt::format("meet{}", i), "junction");
        connect(last, fmt::format("fork{}", i));
        connect(fmt::format("fork{}:first", i), fmt::format("meet{}", i));
        connect(fmt::format("fork{}:second", i), fmt::format("side{}", i));
        connect(fmt::format("side{}:first", i), fmt::format("meet{}", i));
        last = fmt::format("meet{}", i);
    }
    return text + connections;
}

Model modelOf(const std::string& text, Diagnostics& diagnostics) {
    auto model = readModel(test::writeModel(text), diagnostics);
    EXPECT_TRUE(model);
    SeriesValues series(*model, diagnostics);
    checkModel(*model, series, diagnostics);
    return std::move(*model);
}

// Splitter, two delays and a junction behind each other, between a service reservoir and the waterworks that feed it.
std::string rings(int count) {
    std::string text =
        "kesto_model = 1\n[simulation]\nstart = 2012-01-01\nend = 2012-01-02\ntrace_sources = true\n"
        "[brands.works]\ndaily_capacity = 9\nloss_fraction = 0\n[brands.store]\nrefill_rate = 1\n"
        "[[components]]\nname = \"asked\"\ntype = \"demand_source\"\ndemand = 1\n"
        "[[components]]\nname = \"store\"\ntype = \"service_reservoir\"\nbrand = \"store\"\nsize = 9\n";
    std::string connections = "[[connections]]\nfrom = \"asked\"\nto = \"store\"\n";
    std::string last = "store";
    for (int i = 0; i < count; ++i) {
        text += fmt::format(
            "[[components]]\nname = \"split{0}\"\ntype = \"splitter\"\nsize = 50\n"
            "[[components]]\nname = \"left{0}\"\ntype = \"delay\"\nsize = 1\n"
            "[[components]]\nname = \"right{0}\"\ntype = \"delay\"\nsize = 1\n"
            "[[components]]\nname = \"meet{0}\"\ntype = \"junction\"\n",
            i);
        connections += fmt::format(
            "[[connections]]\nfrom = \"{1}\"\nto = \"split{0}\"\n"
            "[[connections]]\nfrom = \"split{0}:first\"\nto = \"left{0}\"\n"
            "[[connections]]\nfrom = \"split{0}:second\"\nto = \"right{0}\"\n"
            "[[connections]]\nfrom = \"left{0}\"\nto = \"meet{0}\"\n"
            "[[connections]]\nfrom = \"right{0}\"\nto = \"meet{0}\"\n",
            i, last);
        last = fmt::format("meet{}", i);
    }
    text += "[[components]]\nname = \"works\"\ntype = \"treatment_plant\"\nbrand = \"works\"\n";
    return text + connections + fmt::format("[[connections]]\nfrom = \"{}\"\nto = \"works\"\n", last);
}

TEST(Network, PathsThatDoubleAreNoWork) {
    for (const std::string& text : {ladder(40), rings(30), rings(200)}) {
        Diagnostics diagnostics;
        const Model model = modelOf(text, diagnostics);
        EXPECT_TRUE(diagnostics.all().empty());
        SeriesValues series(model, diagnostics);
        Record record(model, series, planRecordings(model, Network(model), {}));
        const EngineRun run = runEngine(record);
        EXPECT_EQ(run.outcome, Outcome::finished) << run.message;
    }
}

// Waterworks that all ask the same tree of splitters, with a well at the end of each branch.
std::string tree(int works, int depth) {
    std::string text =
        "kesto_model = 1\n[simulation]\nstart = 2012-01-01\nend = 2012-01-02\ntrace_sources = true\n"
        "[brands.works]\ndaily_capacity = 9\nloss_fraction = 0\n[brands.well]\nyield_per_area = 1\n"
        "[[components]]\nname = \"asked\"\ntype = \"junction\"\n";
    std::string connections;
    const auto connect = [&](const std::string& from, const std::string& to) {
        connections += fmt::format("[[connections]]\nfrom = \"{}\"\nto = \"{}\"\n", from, to);
    };
    for (int i = 0; i < works; ++i) {
        text += fmt::format(
            "[[components]]\nname = \"use{0}\"\ntype = \"demand_source\"\ndemand = 1\n"
            "[[components]]\nname = \"works{0}\"\ntype = \"treatment_plant\"\nbrand = \"works\"\n",
            i);
        connect(fmt::format("use{}", i), fmt::format("works{}", i));
        connect(fmt::format("works{}:request", i), "asked");
    }
    connect("asked", "split1");
    for (int i = 1; i < (1 << (depth + 1)); ++i) {
        const bool isWell = i >= (1 << depth);
        text += fmt::format("[[components]]\nname = \"{}{}\"\ntype = \"{}\"\n{}", isWell ? "well" : "split", i,
                            isWell ? "well" : "splitter",
                            isWell ? "brand = \"well\"\nsize = 1\nquality = 1\n" : "size = 50\n");
        if (i > 1)
            connect(fmt::format("split{}:{}", i / 2, i % 2 + 1), fmt::format("{}{}", isWell ? "well" : "split", i));
    }
    return text + connections;
}

TEST(Network, CountsTheWorkOfTracing) {
    Diagnostics diagnostics;
    const Model model = modelOf(tree(3, 4), diagnostics);
    EXPECT_FALSE(diagnostics.hasErrors());
    // Each of the works has 16 wells behind 15 splitters; the service reservoir has the works behind 30.
    EXPECT_EQ(Network(model).tracingWork(1e6), 3 * (16 + 15));
    const Model plain = modelOf(rings(30), diagnostics);
    EXPECT_EQ(Network(plain).tracingWork(1e6), 31);
}

TEST(Network, ManyUnitsWithManySourcesAreDoubted) {
    const auto doubts = [](int works, int depth) {
        Diagnostics diagnostics;
        modelOf(tree(works, depth), diagnostics);
        EXPECT_FALSE(diagnostics.hasErrors());
        Said codes;
        for (const Diagnostic& one : diagnostics.all()) {
            codes.insert(std::string(one.code));
        }
        return codes;
    };
    EXPECT_EQ(doubts(900, 9), Said{});                 // 920 700
    EXPECT_EQ(doubts(1000, 9), Said{"long-tracing"});  // 1 023 000
}

}  // namespace
}  // namespace kesto
