// Where signals come from, and what the checks say of connections that make no sense.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

#include "checks.h"
#include "model_reader.h"
#include "model_text.h"
#include "origins.h"

namespace kesto {
namespace {

// Components "NAME TYPE" and connections "FROM TO", as plainly as a test can say them.
struct Drawing {
    std::string text = test::headText(3, false);
    std::string connections;

    Drawing& add(const std::string& name, std::string_view type) {
        const Type& found = *findType(type);
        if (!found.parameters.empty()) text += test::brandText(found, name);
        text += test::componentText(found, found.codes[0], name);
        return *this;
    }
    Drawing& connect(const std::string& from, const std::string& to) {
        connections += fmt::format("[[connections]]\nfrom = \"{}\"\nto = \"{}\"\n", from, to);
        return *this;
    }
};

struct Read {
    Diagnostics diagnostics;
    std::optional<Model> model;

    explicit Read(const Drawing& drawing) {
        model = readModel(test::writeModel(drawing.text + drawing.connections), diagnostics);
        if (!model) throw std::runtime_error("no model");
    }
    int at(const std::string& name) const { return model->findComponent(name); }
    std::string origin(Trait trait, const std::string& name, int port = 1) const {
        const Origins origins(*model, Network(*model));
        const auto found = origins.of(trait, {at(name), port});
        if (!found) return "";
        return outputName(model->components[kesto::at(found->component)], found->port);
    }
    // Codes and components of all that is said of the wiring.
    std::vector<std::string> wiring() {
        Diagnostics said;
        checkWiring(*model, Network(*model), said);
        std::vector<std::string> result;
        for (const Diagnostic& one : said.all()) {
            result.push_back(fmt::format("{} {}", one.code, one.component));
        }
        return result;
    }
};

using Said = std::vector<std::string>;

TEST(Origins, WhatPassesOnDoesSoWithWaterAndDemands) {
    std::set<std::string_view> passing;
    for (const Type& type : allTypes()) {
        for (int port = 1; port <= static_cast<int>(type.out.size()); ++port) {
            if (!passesOn(type, type.out[at(port) - 1])) continue;
            SCOPED_TRACE(type.name);
            passing.insert(type.name);
            Drawing drawing;
            drawing.add("roof", "impervious_surface").add("asked", "demand_source");
            drawing.add("w", type.name).add("d", type.name).connect("roof", "w:1").connect("asked", "d:1");
            const Read read(drawing);
            EXPECT_EQ(read.origin(Trait::water, "w", port), "roof:runoff");
            EXPECT_EQ(read.origin(Trait::demand, "w", port), "");
            EXPECT_EQ(read.origin(Trait::demand, "d", port), "asked:demand");
            EXPECT_EQ(read.origin(Trait::water, "d", port), "");
        }
    }
    EXPECT_EQ(passing, (std::set<std::string_view>{"junction",
                                                   "mixer",
                                                   "multiplier",
                                                   "splitter",
                                                   "delay",
                                                   "connector",
                                                   "threshold_divider",
                                                   "threshold_switch",
                                                   "pump",
                                                   "quota_limiter",
                                                   "quality_setter",
                                                   "quality_switch",
                                                   "gravity_link",
                                                   "supply_link",
                                                   "sewer_link",
                                                   "drainage_link",
                                                   "hydropower",
                                                   "infiltration_link",
                                                   "wastewater_treatment",
                                                   "treatment_line",
                                                   "membrane",
                                                   "treatment_plant",
                                                   "well",
                                                   "abstraction",
                                                   "potable_treatment",
                                                   "quality_from_reservoir"}));
}

TEST(Origins, StoresAndSourcesMakeTheirOwn) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("asked", "demand_source").add("tank", "tank");
    drawing.add("service", "service_reservoir").add("turned", "quality_from_reservoir");
    // All to the wrong inputs: what comes out does not depend on it.
    drawing.connect("asked", "tank:inflow").connect("roof", "tank:demand").connect("roof", "service");
    drawing.connect("asked", "turned");
    const Read read(drawing);
    EXPECT_EQ(read.origin(Trait::demand, "tank", 1), "tank:deficit");
    EXPECT_EQ(read.origin(Trait::water, "tank", 2), "tank:overflow");
    EXPECT_EQ(read.origin(Trait::demand, "service", 1), "service:request");
    EXPECT_EQ(read.origin(Trait::water, "service", 1), "");
    EXPECT_EQ(read.origin(Trait::water, "turned", 1), "turned:supply");
    EXPECT_EQ(read.origin(Trait::demand, "turned", 1), "");
    EXPECT_EQ(read.origin(Trait::demand, "turned", 2), "asked:demand");
}

TEST(Origins, GoRoundLoopsAndHoldBoth) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("asked", "demand_source").add("sum", "junction");
    drawing.add("split", "splitter").add("later", "delay").add("unfed", "junction");
    drawing.connect("roof", "sum").connect("asked", "sum").connect("sum", "split");
    drawing.connect("split:second", "later").connect("later", "sum");
    const Read read(drawing);
    for (const char* name : {"sum", "split", "later"}) {
        EXPECT_EQ(read.origin(Trait::water, name), "roof:runoff");
        EXPECT_EQ(read.origin(Trait::demand, name), "asked:demand");
    }
    EXPECT_EQ(read.origin(Trait::water, "unfed"), "");
    EXPECT_EQ(read.origin(Trait::demand, "unfed"), "");
}

TEST(Origins, OnlyTheLastConnectionOfAPairCounts) {
    Drawing drawing;
    drawing.add("toilet", "appliance").add("sum", "junction");
    drawing.connect("toilet:wastewater", "sum").connect("toilet:demand", "sum");
    const Read read(drawing);
    EXPECT_EQ(read.origin(Trait::water, "sum"), "");
    EXPECT_EQ(read.origin(Trait::demand, "sum"), "toilet:demand");
}

TEST(Origins, OfMissingQualities) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("sum", "junction").add("pipe", "gravity_link");
    drawing.add("set", "quality_setter").add("plant", "greywater_treatment").add("later", "delay");
    drawing.add("mix", "mixer").add("basin", "detention_basin");
    drawing.connect("roof", "sum").connect("sum", "pipe").connect("pipe", "basin").connect("basin", "set");
    drawing.connect("set", "plant").connect("plant:overflow", "later").connect("later", "mix");
    const Read read(drawing);
    EXPECT_EQ(read.origin(Trait::noQuality, "roof"), "");
    EXPECT_EQ(read.origin(Trait::noQuality, "sum"), "sum:outflow");
    EXPECT_EQ(read.origin(Trait::noQuality, "pipe"), "sum:outflow");
    EXPECT_EQ(read.origin(Trait::noQuality, "basin"), "sum:outflow");
    EXPECT_EQ(read.origin(Trait::noQuality, "set"), "");
    EXPECT_EQ(read.origin(Trait::noQuality, "plant", 1), "");
    EXPECT_EQ(read.origin(Trait::spillQuality, "plant", 1), "");
    EXPECT_EQ(read.origin(Trait::spillQuality, "later"), "plant:overflow");
    EXPECT_EQ(read.origin(Trait::spillQuality, "mix"), "");  // told at the mixer; what it sends is a number
}

TEST(Wiring, WrongKindsAreToldWhereTheyArrive) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("asked", "demand_source");
    drawing.add("link", "gravity_link").add("second", "sewer_link").add("tank", "tank");
    drawing.connect("asked", "link").connect("link", "second").connect("second", "tank:demand");
    drawing.connect("roof", "tank:inflow");
    // Once for both links; the tank gets a demand, as it should.
    EXPECT_EQ(Read(drawing).wiring(), (Said{"demand-to-water link"}));

    Drawing well;
    well.add("roof", "impervious_surface").add("split", "splitter").add("well", "well").add("next", "well");
    well.connect("roof", "split").connect("split:first", "well").connect("well:unmet", "next");
    EXPECT_EQ(Read(well).wiring(), (Said{"water-to-demand well"}));
}

TEST(Wiring, SumsOfBothAreToldOnce) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("asked", "demand_source").add("sum", "junction");
    drawing.add("more", "impervious_surface").add("total", "junction").add("tank", "tank");
    drawing.connect("roof", "sum").connect("asked", "sum").connect("sum", "total").connect("more", "total");
    drawing.connect("total", "tank:inflow").connect("asked", "tank:demand");
    EXPECT_EQ(Read(drawing).wiring(), (Said{"doubled-demand asked", "mixed-signals sum"}));
}

TEST(Wiring, LoggersAndConnectorsAreNoCopies) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("gauge", "logger").add("river", "water_body");
    drawing.add("copies", "connector").add("sea", "water_body").add("lake", "water_body");
    drawing.connect("roof", "gauge").connect("roof", "copies");
    drawing.connect("copies:first", "sea").connect("copies:second", "lake");
    EXPECT_EQ(Read(drawing).wiring(), Said{});
    drawing.connect("roof", "river");
    EXPECT_EQ(Read(drawing).wiring(), (Said{"doubled-water roof"}));
}

// The input that takes something else is told by itself: it is no copy.
TEST(Wiring, OneFaultIsToldOnce) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("asked", "demand_source").add("tank", "tank").add("well", "well");
    drawing.connect("roof", "tank:inflow").connect("roof", "well").connect("asked", "tank:demand");
    EXPECT_EQ(Read(drawing).wiring(), (Said{"water-to-demand well"}));
}

TEST(Wiring, ReportsAreNoSecondHalf) {
    Drawing drawing;
    drawing.add("asked", "demand_source").add("works", "abstraction").add("well", "well").add("gauge", "logger");
    drawing.connect("asked", "works").connect("works:request", "gauge").connect("works:excess", "well");
    EXPECT_EQ(Read(drawing).wiring(), Said{});
    drawing.add("lake", "junction").connect("works:request", "lake");
    EXPECT_EQ(Read(drawing).wiring(), (Said{"doubled-demand works"}));
}

TEST(Wiring, MixersNeedQualities) {
    Drawing drawing;
    drawing.add("roof", "impervious_surface").add("sum", "junction").add("plant", "rainwater_treatment");
    drawing.add("mix", "mixer").add("shower", "appliance");
    drawing.connect("roof", "sum").connect("sum", "mix").connect("shower:wastewater", "plant");
    drawing.connect("plant:supplied", "mix");
    EXPECT_EQ(Read(drawing).wiring(), (Said{"no-quality mix"}));
    drawing.add("other", "rainwater_treatment").connect("other:overflow", "mix");
    EXPECT_EQ(Read(drawing).wiring(), (Said{"no-quality mix", "no-quality mix"}));
}

// Work that grows with the network only.
TEST(Wiring, TakesNoTimeInALargeNetwork) {
    Model model;
    const int n = 100000;
    const auto add = [&](std::string_view type) {
        Component component;
        component.name = std::to_string(model.components.size());
        component.type = findType(type);
        component.code = component.type->codes[0];
        model.components.push_back(component);
        return static_cast<int>(model.components.size()) - 1;
    };
    int last = add("impervious_surface");
    while (static_cast<int>(model.components.size()) < n) {
        const int split = add("splitter"), left = add("delay"), sum = add("mixer");
        model.connections.push_back({last, 1, split, 1, {}});
        model.connections.push_back({split, 1, left, 1, {}});
        model.connections.push_back({split, 2, sum, 1, {}});
        model.connections.push_back({left, 1, sum, 1, {}});
        last = sum;
    }
    const Network network(model);
    Diagnostics diagnostics;
    const auto start = std::chrono::steady_clock::now();
    checkWiring(model, network, diagnostics);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(diagnostics.all().empty());
    EXPECT_LT(taken.count(), 5) << "seconds";  // a tenth of one as a rule
}

}  // namespace
}  // namespace kesto
