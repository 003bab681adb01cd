// What is left of a run that does not end well.
#include "engine_run.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "load.h"
#include "model_text.h"
#include "network.h"
#include "record.h"
#include "results.h"
#include "summary.h"

namespace kesto {
namespace {

constexpr const char* kRain = R"(
[brands.roof]
evaporation_fraction = 0.5
[[components]]
name = "roof"
type = "impervious_surface"
group = "g"
brand = "roof"
size = 10
)";

// Rain that ends where a page ends: reading beyond it kills the process.
class EndingSeries {
  public:
    explicit EndingSeries(std::size_t values) : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        memory_ =
            static_cast<char*>(mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(memory_ + page_, page_, PROT_NONE);
        first = reinterpret_cast<float*>(memory_ + page_) - values;
        std::fill_n(first, values, 4.0F);
    }
    ~EndingSeries() { munmap(memory_, 2 * page_); }
    float* first;

  private:
    std::size_t page_;
    char* memory_;
};

TEST(EngineRun, KeepsTheStepsBeforeACrash) {
    std::string head = test::headText(1, false);
    head.replace(head.find("2015-12-31"), 10, "2013-01-01");
    LoadedModel loaded(test::writeModel(head + kRain));
    ASSERT_TRUE(loaded.isFit());
    const RecordingPlan plan = planRecordings(loaded.model(), Network(loaded.model()), {{0, 1}});
    Record record(loaded.model(), loaded.series(), plan);
    EndingSeries rain(800);
    record.globals().Rainfall[0].Value = rain.first;
    const EngineRun run = runEngine(record);
    EXPECT_EQ(run.outcome, Outcome::crashed);
    // The engine goes block by block; the block that it died in is lost.
    EXPECT_GT(run.stepsRun, 500U);
    EXPECT_LE(run.stepsRun, 800U);
    EXPECT_EQ(static_cast<std::size_t>(run.step), run.stepsRun);
    EXPECT_NE(run.message.find("signal 11"), std::string::npos) << run.message;
    const Results results = collectResults(loaded.model(), record, record.shared(), plan, run);
    ASSERT_EQ(results.flows.size(), 1U);
    for (std::size_t step = 0; step < run.stepsRun; ++step) {
        EXPECT_EQ(results.flows[0].signals[step].quantity, 20.0F);
    }
}

TEST(EngineRun, ReportsAnInvariant) {
    LoadedModel loaded(test::writeModel(test::headText(2, true) + kRain +
                                        "[[components]]\nname = \"end\"\ntype = \"water_body\"\n"
                                        "[[connections]]\nfrom = \"roof\"\nto = \"end\"\n"));
    ASSERT_TRUE(loaded.isFit());
    Record record(loaded.model(), loaded.series(), planRecordings(loaded.model(), Network(loaded.model()), {}));
    record.globals().Net_Conn[0].senderPort = 3;
    const EngineRun run = runEngine(record);
    EXPECT_EQ(run.outcome, Outcome::crashed);
    EXPECT_EQ(run.stepsRun, 0U);
    EXPECT_EQ(run.message, "Assertion failed: 1==0, file binarytree.cpp, line 125");
}

TEST(EngineRun, SaysWhenItWasInterrupted) {
    LoadedModel loaded(test::writeModel(test::headText(2, false) + kRain));
    const auto days = static_cast<int>(loaded.model().simulation.days());
    const auto told = [&](int step) {
        const EngineRun run{Outcome::interrupted, {}, step, static_cast<std::size_t>(std::max(step, 0))};
        return failureOf(Results{&loaded.model(), run, run.stepsRun, {}, {}, {}, {}, {}});
    };
    EXPECT_EQ(told(-1), "the run was interrupted before the first step");
    EXPECT_NE(told(days - 1).find("step " + std::to_string(days) + " of "), std::string::npos);
    EXPECT_EQ(told(days), "the run was interrupted after the last step");
}

TEST(EngineRun, NamesWhatTheEngineNumbers) {
    LoadedModel loaded(test::writeModel(test::headText(2, false) + kRain));
    const Model& model = loaded.model();
    const std::string file = model.path;
    EXPECT_EQ(explainMessage("IM (id=1000001) wrong inputs!", model),
              "IM (id=1000001) wrong inputs! (component \"roof\", impervious_surface, " + file + ":" +
                  std::to_string(model.components[0].place.line) + ":8)");
    EXPECT_NE(explainMessage("Series of type Rainfall of component with id=1 not found!", model).find("(group \"g\", "),
              std::string::npos);
    EXPECT_NE(explainMessage("Specification 27 of brand 1 not found!", model).find("(brand \"roof\", "),
              std::string::npos);
    EXPECT_EQ(explainMessage("Error in CalcSequence!", model), "Error in CalcSequence!");
    EXPECT_EQ(explainMessage("Compnt. 77 has -3 input signals!", model), "Compnt. 77 has -3 input signals!");
}

TEST(EngineRun, DelaysAreReadFromTheirOwnLog) {
    LoadedModel loaded(test::writeModel(test::headText(5, false) + kRain +
                                        "[[components]]\nname = \"late\"\ntype = \"delay\"\nsize = 2\n"
                                        "[[components]]\nname = \"end\"\ntype = \"logger\"\n"
                                        "[[connections]]\nfrom = \"roof\"\nto = \"late\"\n"
                                        "[[connections]]\nfrom = \"late\"\nto = \"end\"\n"));
    ASSERT_TRUE(loaded.isFit());
    const RecordingPlan plan = planRecordings(loaded.model(), Network(loaded.model()), allOutputs(loaded.model()));
    Record record(loaded.model(), loaded.series(), plan);
    const EngineRun run = runEngine(record);
    const Results results = collectResults(loaded.model(), record, record.shared(), plan, run);
    const Flow* derived = results.find({1, 1});
    const Flow* logged = results.find({2, 0});
    ASSERT_TRUE(derived && logged);
    const float expected[] = {0, 0, 40, 40, 40};
    for (std::size_t step = 0; step < 5; ++step) {
        EXPECT_EQ(derived->signals[step].quantity, expected[step]);
        EXPECT_EQ(logged->signals[step].quantity, expected[step]);
        EXPECT_EQ(logged->signals[step].quality, derived->signals[step].quality);
    }
}

}  // namespace
}  // namespace kesto
