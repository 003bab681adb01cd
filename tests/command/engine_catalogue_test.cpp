// Holds the catalogue against the engine: a component given exactly what its type lists runs, and the engine complains
// when anything of it is left out.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "checks.h"
#include "engine_run.h"
#include "model_reader.h"
#include "model_text.h"
#include "network.h"
#include "record.h"

namespace kesto {
namespace {

struct Built {
    Diagnostics diagnostics;
    std::optional<Model> model;
    std::unique_ptr<SeriesValues> series;
    RecordingPlan plan;
    std::unique_ptr<Record> record;

    explicit Built(const std::string& text) {
        model = readModel(test::writeModel(text), diagnostics);
        if (!model) return;
        series = std::make_unique<SeriesValues>(*model, diagnostics);
        checkModel(*model, *series, diagnostics);
        if (diagnostics.hasErrors()) return;
        plan = planRecordings(*model, Network(*model), {});
        record = std::make_unique<Record>(*model, *series, plan);
    }
    std::string said() const {
        std::ostringstream out;
        diagnostics.print(out);
        return out.str();
    }
};

void forEachCode(const std::function<void(const Type&, int)>& body) {
    for (const Type& type : allTypes()) {
        for (const int code : type.codes) {
            SCOPED_TRACE(fmt::format("{} ({})", type.name, code));
            body(type, code);
        }
    }
}

TEST(EngineCatalogue, WhatIsListedIsEnough) {
    forEachCode([](const Type& type, int code) {
        for (const bool tracing : {false, true}) {
            Built built(test::singleModel(type, code, tracing));
            ASSERT_TRUE(built.record) << built.said();
            const EngineRun run = runEngine(*built.record);
            EXPECT_EQ(run.outcome, Outcome::finished) << run.message;
        }
    });
}

// Runs with something taken away, and puts it back.
template <class Field, class Value>
std::string messageWith(Record& record, Field& field, Value value) {
    const Field before = field;
    field = static_cast<Field>(value);
    const EngineRun run = runEngine(record);
    field = before;
    return run.outcome == Outcome::failed ? run.message : "(no failure)";
}

TEST(EngineCatalogue, EachSpecificationIsRead) {
    forEachCode([](const Type& type, int code) {
        Built built(test::singleModel(type, code, false));
        ASSERT_TRUE(built.record) << built.said();
        AUEglobals& g = built.record->globals();
        const float brand = g.Net_Compnt[0].brand;
        std::set<int> listed;
        for (const Parameter& parameter : type.parameters) {
            listed.insert(parameter.number);
        }
        for (int i = 0; i < g.nTechSpecs; ++i) {
            SpecificationRow& row = g.TechSpecs[i];
            if (row.brand != brand) continue;
            EXPECT_TRUE(listed.erase(static_cast<int>(row.number))) << row.number << " is not listed";
            EXPECT_EQ(messageWith(*built.record, row.select1, 0),
                      fmt::format("Specification {} of brand {} not found!", row.number, brand));
        }
        EXPECT_TRUE(listed.empty()) << "listed, but not written";
    });
}

SeriesEntry* entryOf(AUEglobals& g, SeriesKind kind, int id) {
    SeriesEntry* const tables[] = {g.Rainfall, g.Temp,    g.Tmin,      g.Tmax,   g.Wind,     g.Occup,  g.Dmdflct,
                                   g.FreqSer,  g.Multpls, g.Threshold, g.InsDmd, g.WatQuant, g.WatQual};
    const int counts[] = {g.nRainfall, g.nTemp,    g.nTmin,      g.nTmax,   g.nWind,     g.nOccup,  g.nDmdflct,
                          g.nFreqSer,  g.nMultpls, g.nThreshold, g.nInsDmd, g.nWatQuant, g.nWatQual};
    const auto index = static_cast<std::size_t>(kind);
    for (int i = 0; i < counts[index]; ++i) {
        if (tables[index][i].id == id) return &tables[index][i];
    }
    return nullptr;
}

TEST(EngineCatalogue, EachSeriesIsRead) {
    forEachCode([](const Type& type, int code) {
        for (const SeriesNeed& need : type.series) {
            Built built(test::singleModel(type, code, need.onlyTracing));
            ASSERT_TRUE(built.record) << built.said();
            const int id = need.filing == Filing::own ? built.model->components[0].id : built.model->groups[0].id;
            SeriesEntry* entry = entryOf(built.record->globals(), need.kind, id);
            ASSERT_NE(entry, nullptr) << info(need.kind).name;
            const std::string expected = need.kind == SeriesKind::uses
                                             ? std::string("Freq series of a group not found!")
                                             : fmt::format("Series of type {} of component with id={} not found!",
                                                           info(need.kind).engineWord, id);
            EXPECT_EQ(messageWith(*built.record, entry->id, -77), expected);
        }
    });
}

TEST(EngineCatalogue, InputsAreCounted) {
    forEachCode([](const Type& type, int code) {
        if (type.inputs() == kAnyInputs) return;
        Built built(test::singleModel(type, code, false));
        ASSERT_TRUE(built.record) << built.said();
        AUEglobals& g = built.record->globals();
        const auto wrong = fmt::format("{} (id={}) wrong inputs!", type.tag, built.model->components[0].id);
        if (type.inputs() > 0) {
            // The first connection feeds the component: it now goes round in the source itself, which is not run.
            ConnectionRow& first = g.Net_Conn[0];
            g.nConns -= 1;
            const ConnectionRow last = g.Net_Conn[g.nConns];
            const ConnectionRow before = first;
            first = last;
            const EngineRun run = runEngine(*built.record);
            first = before;
            g.nConns += 1;
            EXPECT_EQ(run.message, wrong);
        } else {
            Built fed(test::singleModel(type, code, false) +
                      "[[components]]\nname = \"extra\"\ntype = \"demand_source\"\ndemand = 1\n"
                      "[[components]]\nname = \"end2\"\ntype = \"junction\"\n"
                      "[[connections]]\nfrom = \"extra\"\nto = \"end2\"\n");
            ASSERT_TRUE(fed.record) << fed.said();
            AUEglobals& f = fed.record->globals();
            f.Net_Conn[f.nConns - 1].receiverId = fed.model->components[0].id;
            EXPECT_EQ(runEngine(*fed.record).message, wrong);
        }
    });
}

TEST(EngineCatalogue, PotentialsAreThoseListed) {
    forEachCode([](const Type& type, int code) {
        Built built(test::singleModel(type, code, false));
        ASSERT_TRUE(built.record) << built.said();
        // All parameters at a quarter of their number, so that nothing that is booked is zero.
        AUEglobals& g = built.record->globals();
        for (int i = 0; i < g.nTechSpecs; ++i) {
            if (g.TechSpecs[i].value == 0) g.TechSpecs[i].value = 0.5F;
        }
        // Reservoirs of other types book too: only the component itself stays in the group.
        std::vector<std::string> booked, listed;
        for (std::size_t i = 1; i < built.model->components.size(); ++i) {
            if (built.model->components[i].code != code::kReservoir) g.Net_Compnt[i].key = 0;
        }
        if (type.reservoirs > 0) return;  // they share the group with what books
        ASSERT_EQ(runEngine(*built.record).outcome, Outcome::finished);
        for (std::size_t potential = 0; potential < kPotentials; ++potential) {
            const float* values = built.record->shared().potentials[potential];
            bool any = false;
            for (std::size_t step = 0; step < built.record->steps(); ++step) {
                any = any || values[step] != 0;
            }
            const auto which = static_cast<Potential>(potential);
            if (any) booked.emplace_back(info(which).name);
            const bool onlyKindNine = type.isAppliance() && which == kInfiltration && code != code::kOutdoorUse;
            const bool isListed =
                std::find(type.potentials.begin(), type.potentials.end(), which) != type.potentials.end();
            if (isListed && !onlyKindNine) listed.emplace_back(info(which).name);
        }
        EXPECT_EQ(booked, listed);
    });
}

// A component whose inputs get flows of one quality; what its output sends ends in a water body.
std::string fedWith(const Type& type, int code, int port, int quality, double amount) {
    std::string text = test::headText(5, false) + test::brandText(type, "x");
    for (int i = 0; i < type.reservoirs; ++i) {
        text += test::brandText(*findType(code::kReservoir), fmt::format("r{}", i));
    }
    text += test::componentText(type, code, "x");
    std::string connections;
    const auto connect = [&](const std::string& from, const std::string& to) {
        connections += fmt::format("[[connections]]\nfrom = \"{}\"\nto = \"{}\"\n", from, to);
    };
    const auto feed = [&](const std::string& to, int toPort, int given) {
        const std::string name = fmt::format("{}{}", to, toPort);
        text += fmt::format(
            "[[components]]\nname = \"{0}\"\ntype = \"demand_source\"\ndemand = {1}\n"
            "[[components]]\nname = \"{0}q\"\ntype = \"quality_setter\"\ndemand = {2}\n",
            name, amount / toPort, given);
        connect(name, name + "q");
        connect(name + "q", fmt::format("{}:{}", to, toPort));
    };
    const int inputs = type.inputs() == kAnyInputs ? 1 : type.inputs();
    for (int i = 1; i <= inputs; ++i) {
        feed("x", i, quality);
    }
    for (int i = 0; i < type.reservoirs; ++i) {
        const std::string name = fmt::format("r{}", i);
        text += test::componentText(*findType(code::kReservoir), code::kReservoir, name);
        feed(name, 1, 3);
        feed(name, 2, 3);
    }
    text += "[[components]]\nname = \"end\"\ntype = \"water_body\"\n";
    connect(fmt::format("x:{}", port), "end");
    return text + connections;
}

// What an output sends on the last day.
Signal sent(const Type& type, int code, int port, int quality, double amount) {
    Built built(fedWith(type, code, port, quality, amount));
    if (!built.record) throw std::runtime_error(built.said());
    const EngineRun run = runEngine(*built.record);
    if (run.outcome != Outcome::finished) throw std::runtime_error(run.message);
    return built.record->shared().waterBodies[0][built.record->steps() - 1];
}

TEST(EngineCatalogue, QualitiesAreThoseListed) {
    forEachCode([](const Type& type, int code) {
        for (int port = 1; port <= static_cast<int>(type.out.size()); ++port) {
            const Port& output = type.out[static_cast<std::size_t>(port) - 1];
            SCOPED_TRACE(output.name);
            const float ofSeven = sent(type, code, port, 7, 80).quality;
            const float ofNone = sent(type, code, port, -1, 80).quality;
            switch (output.quality) {
                case Quality::none: {
                    // What a second output is not given a quality for keeps that of another component.
                    const bool isLeft = code == code::kAbstraction || code == code::kPotableTreatment;
                    EXPECT_EQ(ofSeven, isLeft && port == 2 ? 0 : -1);
                    break;
                }
                case Quality::own:
                    EXPECT_GE(ofNone, 0);
                    EXPECT_EQ(ofNone, ofSeven);
                    break;
                case Quality::passed:
                    EXPECT_GT(ofSeven, 0);
                    EXPECT_LT(ofNone, 0);
                    break;
                case Quality::mixed:
                    EXPECT_GT(ofSeven, 0);
                    EXPECT_LT(ofNone, ofSeven);
                    break;
                case Quality::spill:
                    EXPECT_GT(ofSeven, 0);
                    EXPECT_FALSE(std::isfinite(sent(type, code, port, 7, 0).quality));
                    break;
            }
            EXPECT_TRUE(std::isfinite(ofSeven) && std::isfinite(ofNone));
        }
    });
}

TEST(EngineCatalogue, WhatPassesOnMakesNothing) {
    forEachCode([](const Type& type, int code) {
        for (int port = 1; port <= static_cast<int>(type.out.size()); ++port) {
            const Port& output = type.out[static_cast<std::size_t>(port) - 1];
            if (!passesOn(type, output)) continue;
            SCOPED_TRACE(output.name);
            EXPECT_EQ(sent(type, code, port, 7, 0).quantity, 0);
        }
    });
}

}  // namespace
}  // namespace kesto
