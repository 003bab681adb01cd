// Water in = water out + change of storage, for each model that conserves water. Flows and states are single, so the
// balance closes but for rounding; it is added up in double and may miss by a few units in the last place of what
// flows.

#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "outcome.h"
#include "properties.h"

namespace {

constexpr std::int32_t kUnit = 1000001;
constexpr std::int32_t kKey = 2000001;
constexpr std::int32_t kInputs[] = {kUnit + 1, kUnit + 2};
constexpr std::int32_t kLogs[] = {kUnit + 11, kUnit + 12};

float pick(int low, int high) {
    return static_cast<float>(*rc::gen::inRange(low, high + 1)) / 16.0F;
}

std::vector<float> picks(int count, int low, int high) {
    std::vector<float> values;
    for (int i = 0; i < count; ++i)
        values.push_back(pick(low, high));
    return values;
}

// One component with demand sources before it and loggers behind it.
Model unitUnderTest(int type, int inputs) {
    Model model;
    model.nSteps = 12;
    model.Latitude = 45.0F;
    model.TimeStep = type == 46 || type == 64 ? 1.0F : pick(4, 16);
    model.pots = {kKey};
    const auto key = static_cast<float>(kKey);
    model.components.push_back({static_cast<float>(kUnit), static_cast<float>(type), key, 1.0F, pick(16, 1600)});
    for (int number = 1; number <= 63; ++number) {
        const bool amount = number == 1 || number > 60;
        addSpecification(model, 1.0F, number, amount ? pick(0, 800) : pick(0, 8));  // rates and fractions up to a half
    }
    for (int i = 0; i < inputs; ++i) {
        const std::int32_t id = kInputs[i];
        model.components.push_back({static_cast<float>(id), 45.0F, 0.0F, 0.0F, 100.0F});
        model.table(Table::InsDmd).push_back({id, picks(model.nSteps, 0, 800)});
        model.connections.push_back({0, id, 1, kUnit, i + 1});
    }
    for (int port = 1; port <= 2; ++port) {
        const std::int32_t id = kLogs[port - 1];
        model.components.push_back({static_cast<float>(id), 26.0F, 0.0F, 0.0F, 0.0F});
        model.connections.push_back({0, kUnit, port, id, 1});
    }
    const auto add = [&](Table table, std::int32_t id, int low, int high) {
        model.table(table).push_back({id, picks(model.nSteps, low, high)});
    };
    add(Table::WatQuant, kUnit, 0, 160);
    add(Table::WatQual, kUnit, 0, 160);
    add(Table::InsDmd, kUnit, 0, 160);  // after those of the inputs
    add(Table::Threshold, kUnit, -800, 800);
    add(Table::Rainfall, kKey, 0, 320);
    add(Table::Temp, kKey, 0, 320);
    add(Table::Tmin, kKey, 0, 160);
    add(Table::Tmax, kKey, 160, 480);
    return model;
}

// What a step looked like, all as double.
struct Observed {
    double in1, in2, out1, out2;
    double before, after;  // WatQuant of the unit
    double rain;
    double losses, infiltration, evaporation;  // potentials
    double size, dt;
    std::vector<double> s;  // specifications by number
};

class Run {
  public:
    Run(const Model& model, int inputs) : model_(model), inputs_(inputs), outcome_(outcome(model)) {
        if (!outcome_.ending.starts_with("123456789 0 ")) RC_FAIL("the run failed: " + outcome_.ending);
    }

    Observed at(int step) const {
        Observed o{};
        o.in1 = inputs_ > 0 ? input(0, step) : 0.0;
        o.in2 = inputs_ > 1 ? input(1, step) : 0.0;
        o.out1 = value("Logs quantity " + std::to_string(kLogs[0]), step);
        o.out2 = value("Logs quantity " + std::to_string(kLogs[1]), step);
        const std::string state = "WatQuant " + std::to_string(kUnit);
        o.after = value(state, step);
        o.before = step > 0 ? value(state, step - 1)
                            : static_cast<double>(model_.table(Table::WatQuant).front().values.front());
        o.rain = static_cast<double>(model_.table(Table::Rainfall).front().values[static_cast<std::size_t>(step)]);
        o.losses = value("LosPot " + std::to_string(kKey), step);
        o.infiltration = value("InfPot " + std::to_string(kKey), step);
        o.evaporation = value("EvaPot " + std::to_string(kKey), step);
        o.size = static_cast<double>(model_.components.front().size);
        o.dt = static_cast<double>(model_.TimeStep);
        o.s.assign(64, 0.0);
        for (const SpecificationRow& row : model_.specifications)
            o.s[static_cast<std::size_t>(row.number)] = static_cast<double>(row.value);
        return o;
    }

  private:
    double value(const std::string& name, int step) const {
        return std::stod(outcome_.values.at(name)[static_cast<std::size_t>(step)]);
    }
    // The sources deliver value * 100 / 100, rounded twice.
    double input(int which, int step) const {
        const float wanted =
            model_.table(Table::InsDmd)[static_cast<std::size_t>(which)].values[static_cast<std::size_t>(step)];
        return static_cast<double>(wanted * 100.0F / 100.0F);
    }

    const Model& model_;
    int inputs_;
    Outcome outcome_;
};

// What came in and what went out or stayed, in the step.
struct Sides {
    double in;
    double out;
};

struct Conserving {
    const char* name;
    int type;
    int inputs;
    Sides (*sides)(const Observed&);
};

const Conserving kModels[] = {
    {"tank", 32, 2,
     [](const Observed& o) {
         return Sides{o.in1 + o.before + o.out1, o.in2 + o.after + o.out2};
     }},
    {"impervious_surface", 28, 0,
     [](const Observed& o) {
         return Sides{o.rain * o.size, o.out1 + o.evaporation};
     }},
    {"local_treatment", 3, 1,
     [](const Observed& o) {
         return Sides{o.before + o.in1, o.out1 + o.after + o.out2};
     }},
    {"greywater_treatment", 24, 1,
     [](const Observed& o) {
         return Sides{o.before + o.in1, o.out1 + o.after + o.out2};
     }},
    {"rainwater_treatment", 23, 1,
     [](const Observed& o) {
         return Sides{o.before + o.in1, o.out1 + o.after + o.out2};
     }},
    {"wastewater_treatment", 25, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1};
     }},
    {"soakaway", 22, 1,
     [](const Observed& o) {
         return Sides{o.before + o.in1, o.infiltration + o.after + o.out1};
     }},
    {"reservoir", 39, 2,
     [](const Observed& o) {
         return Sides{o.before + o.in1 + o.out1, o.in2 + o.infiltration + o.after + o.out2};
     }},
    {"gravity_link", 35, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.losses};
     }},
    {"sewer_link", 41, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.losses};
     }},
    {"drainage_link", 42, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.losses};
     }},
    {"infiltration_link", 11, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.infiltration};
     }},
    {"supply_link", 27, 1,
     [](const Observed& o) {
         return Sides{o.in1 + o.losses, o.out1};
     }},
    {"well", 38, 1,
     [](const Observed& o) {
         return Sides{o.in1 + o.infiltration, o.out1};
     }},
    {"splitter", 36, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.out2};
     }},
    {"threshold_divider", 53, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.out2};
     }},
    {"threshold_switch", 63, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.out2};
     }},
    {"quota_limiter", 64, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.out2};
     }},
    {"membrane", 58, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1 + o.out2};
     }},
    {"detention_basin", 50, 1,
     [](const Observed& o) {
         return Sides{o.in1 + o.before * o.size, o.out1 + o.after * o.size};
     }},
    {"green_area", 46, 0,
     [](const Observed& o) {
         return Sides{(o.rain + o.before) * o.size + o.out2,
                      o.after * o.size + o.out1 + o.infiltration + o.evaporation};
     }},
    {"junction", 30, 2,
     [](const Observed& o) {
         return Sides{o.in1 + o.in2, o.out1};
     }},
    {"mixer", 31, 2,
     [](const Observed& o) {
         return Sides{o.in1 + o.in2, o.out1};
     }},
    {"hydropower", 44, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1};
     }},
    {"pump", 55, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1};
     }},
    {"quality_setter", 56, 1,
     [](const Observed& o) {
         return Sides{o.in1, o.out1};
     }},
};

// Rounding of a handful of operations on amounts of this size.
bool closes(const Sides& sides, double scale) {
    return std::abs(sides.in - sides.out) <= 2e-6 * std::max(1.0, scale);
}

bool conserves(const Conserving& model) {
    return rc::check(std::string("water is conserved: ") + model.name, [&] {
        const Model network = unitUnderTest(model.type, model.inputs);
        const Run run(network, model.inputs);
        for (int step = 0; step < network.nSteps; ++step) {
            const Observed o = run.at(step);
            const Sides sides = model.sides(o);
            const double scale = std::abs(o.in1) + std::abs(o.in2) + std::abs(o.before) * std::max(1.0, o.size) +
                                 (std::abs(o.rain) + 10.0) * o.size;
            if (!closes(sides, scale))
                RC_FAIL("step " + std::to_string(step) + ": in " + std::to_string(sides.in) + ", out " +
                        std::to_string(sides.out));
        }
    });
}

// The bucket loses what its rates say, or less where it has less.
bool perviousSurface() {
    return rc::check("water is conserved: pervious surface", [] {
        const Model network = unitUnderTest(29, 0);
        const Run run(network, 0);
        for (int step = 0; step < network.nSteps; ++step) {
            const Observed o = run.at(step);
            const double lost = o.rain + o.before - o.after - o.out1 / o.size;
            const double wanted = o.before * (o.s[27] + o.s[28]) * o.dt;
            const double slack = 1e-5 * (1.0 + o.rain + o.before);
            RC_ASSERT(lost >= -slack);
            RC_ASSERT(lost <= wanted + slack);
            if (o.after > slack) RC_ASSERT(std::abs(lost - wanted) <= slack);
        }
    });
}

// The soil store: rain that enters less evaporation, but not below 0, is kept, drained or let out.
bool soilStore() {
    return rc::check("water is conserved: soil store", [] {
        const Model network = unitUnderTest(62, 0);
        const Run run(network, 0);
        for (int step = 0; step < network.nSteps; ++step) {
            const Observed o = run.at(step);
            const double T =
                static_cast<double>(network.table(Table::Temp).front().values[static_cast<std::size_t>(step)]);
            const double E = 16.0 * std::pow(10.0 * T / 60.0, 1.7) * 12.0 / 360.0 * o.dt;
            const double entered = std::max(o.s[58] * o.rain - o.s[59] * E, 0.0);
            const double kept = o.after + o.out1 + o.infiltration;
            RC_ASSERT(std::abs(o.before + entered - kept) <= 1e-5 * (1.0 + o.before + o.rain));
        }
    });
}

// The service reservoir gives what is asked, as far as it has it.
bool serviceReservoir() {
    return rc::check("water is conserved: service reservoir", [] {
        const Model network = unitUnderTest(33, 1);
        const Run run(network, 1);
        for (int step = 0; step < network.nSteps; ++step) {
            const Observed o = run.at(step);
            const double served = o.before + o.out1 - o.after;
            const double slack = 1e-5 * (1.0 + o.before + o.out1 + o.in1);
            RC_ASSERT(served <= o.in1 + slack);
            if (o.after > slack) RC_ASSERT(std::abs(served - o.in1) <= slack);
            RC_ASSERT(o.after >= 0.0);
        }
    });
}

}  // namespace

bool checkConservation() {
    bool all = perviousSurface();
    all = soilStore() && all;
    all = serviceReservoir() && all;
    for (const Conserving& model : kModels)
        all = conserves(model) && all;
    return all;
}
