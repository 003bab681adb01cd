#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <iostream>

#include "calendar.h"
#include "commands.h"
#include "display.h"
#include "files.h"
#include "schema.h"

namespace kesto {

namespace {

// By the first line, editors find the schema beside the model.
constexpr const char* kSchema = "kesto-schema.json";
constexpr const char* kModel =
    R"(#:schema ./kesto-schema.json
# A roof that feeds a tank that flushes a toilet. Run it with: kesto run model.toml -o results

kesto_model = 1                  # version of this format
title = "A first model"

[simulation]
start = 2023-01-01
end = 2023-12-31                 # included

[series]                         # weather, one row a day
file = "weather.csv"
time = "date"
rainfall = "rain_mm"             # a column; a number or { monthly = [...] } would do as well

[groups.house]                   # who uses water; results of costs and energy are summed by group
occupancy = 2.5                  # persons
uses = { 1 = 5.0 }               # of each kind of appliance: uses a day and person

[brands.toilet]                  # properties that several components can share: see kesto types appliance
volume_per_use = "6 L"

[brands.tiles]
evaporation_fraction = 0.1       # of the rain

[[components]]
name = "roof"
type = "impervious_surface"
group = "house"
brand = "tiles"
size = 50                        # m2

[[components]]
name = "toilet"
type = "appliance"
kind = 1                         # of the uses above
group = "house"
brand = "toilet"

[[components]]
name = "tank"
type = "tank"
group = "house"
size = "1.5 m3"
initial_storage = "0.5 m3"

[[components]]
name = "mains"                   # delivers what the tank cannot
type = "junction"

[[components]]
name = "sewer"
type = "junction"

[[connections]]                  # component:port; kesto types tank lists the ports of a tank
from = "roof:runoff"
to = "tank:inflow"

[[connections]]
from = "toilet:demand"
to = "tank:demand"

[[connections]]
from = "tank:deficit"
to = "mains"

[[connections]]
from = "tank:overflow"
to = "sewer"

[[connections]]
from = "toilet:wastewater"
to = "sewer"
)";

// Made-up weather: a wet day every third one, and little rain in summer.
std::string weather() {
    constexpr std::array<double, 12> kRain{9, 8, 7, 6, 4, 2, 1, 1, 4, 8, 9, 10};
    std::string text = "# Made up: replace it with the weather of your place.\ndate,rain_mm\n";
    const Day start = dayOf({2023, 1, 1});
    for (Day day = start; day < start + 365; ++day) {
        const auto month = static_cast<std::size_t>(dateOf(day).month) - 1;
        text += fmt::format("{},{}\n", toText(day), day % 3 == 0 ? kRain[month] : 0);
    }
    return text;
}

// As a word of a command line.
std::string quoted(const std::string& path) {
    const std::string shown = printable(path);
    return shown.find(' ') == std::string::npos ? shown : '"' + shown + '"';
}

}  // namespace

int newCommand(const NewOptions& options) {
    const std::string model = joined(options.folder, "model.toml"), data = joined(options.folder, "weather.csv");
    const std::string schema = joined(options.folder, kSchema);
    for (const std::string& path : {model, data, schema}) {
        // Neither is a link that leads nowhere replaced.
        if (!std::filesystem::exists(std::filesystem::symlink_status(pathOf(path)))) continue;
        std::cerr << fmt::format("kesto new: error: {} is there already\n", printable(path));
        return kBadModel;
    }
    makeFolder(options.folder);
    replaceFile(model, kModel);
    replaceFile(data, weather());
    replaceFile(schema, modelSchema());
    std::cout << fmt::format("{} is a small model that runs:\n  kesto run {} -o {}\n", printable(model), quoted(model),
                             quoted(joined(options.folder, "results")));
    return kGood;
}

}  // namespace kesto
