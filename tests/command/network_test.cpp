#include "network.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>

#include "checks.h"
#include "model_reader.h"
#include "model_text.h"

namespace kesto {
namespace {

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

TEST(Network, CountsVisitsOfAllWays) {
    Diagnostics diagnostics;
    const Model model = modelOf(ladder(12), diagnostics);
    EXPECT_FALSE(diagnostics.hasErrors());
    EXPECT_EQ(diagnostics.count(Severity::warning), 0U);
    // Rung i is reached 2^i times; fork and side are passed as often, and the place where they meet twice as often.
    double expected = 1;
    for (int i = 0; i < 12; ++i) {
        expected += 4 * std::ldexp(1.0, i);
    }
    EXPECT_EQ(Network(model).visitsFrom(model.findComponent("works"), 1e9), expected);
    EXPECT_EQ(Network(model).visitsFrom(model.findComponent("meet11"), 1e9), 1);
}

TEST(Network, WaysThatDoubleAreDoubted) {
    Diagnostics many;
    modelOf(ladder(18), many);
    EXPECT_FALSE(many.hasErrors());
    EXPECT_EQ(many.count(Severity::note), 1U);
    Diagnostics tooMany;
    modelOf(ladder(40), tooMany);
    EXPECT_TRUE(tooMany.hasErrors());
}

}  // namespace
}  // namespace kesto
