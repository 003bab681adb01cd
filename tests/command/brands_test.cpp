// Units of a brand's parameters.
#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "model_reader.h"
#include "model_text.h"

namespace kesto {
namespace {

std::string said(const Diagnostics& diagnostics) {
    std::ostringstream out;
    diagnostics.print(out);
    return out.str();
}

TEST(Brands, UnderstandUnitsByTheTypesThatUseThem) {
    const auto brand = [](const std::string& parameters, const std::string& types, Diagnostics& diagnostics) {
        std::string text = "kesto_model = 1\n[simulation]\nstart = 2012-12-30\nend = 2013-01-01\n" + types +
                           "[brands.b]\n" + parameters;
        return readModel(test::writeModel(text), diagnostics)->brands[0];
    };
    const std::string tank = "[[components]]\nname = \"t\"\ntype = \"tank\"\nsize = 1\nbrand = \"b\"\n";
    const std::string pump = "[[components]]\nname = \"p\"\ntype = \"pump\"\nbrand = \"b\"\n";
    const std::string other = "[[components]]\nname = \"l\"\ntype = \"logger\"\n";
    Diagnostics good;
    EXPECT_EQ(
        brand("capacity_cost = \"2 cost/L/step\"\n13 = \"3 cost/year\"\n", tank, good).specifications.at(12).value, 2);
    EXPECT_EQ(brand("energy_per_volume = \"2 kWh/m3\"\n", tank + pump, good).specifications.at(3).value, 0.002);
    EXPECT_EQ(brand("capacity_cost = 2\n", tank + pump, good).specifications.at(12).value, 2);
    EXPECT_EQ(brand("capacity_cost = \"2 cost/unit/step\"\n", other, good).specifications.at(12).value, 2);
    EXPECT_EQ(said(good), "");
    for (const auto& [parameters, types, text] : std::vector<std::array<std::string, 3>>{
             {"capacity_cost = \"2 cost/step\"\n", tank, "expected a number in cost/L/step, or"},
             {"capacity_cost = \"2 cost/step\"\n", tank + pump,
              "but its unit is cost/L/step for tank, cost/step for pump; expected a number, or a brand for each"},
             {"capacity_cost = \"2 cost\"\n", other, "cost/unit/step for treatment_plant; expected one of these"}}) {
        Diagnostics diagnostics;
        brand(parameters, types, diagnostics);
        EXPECT_NE(said(diagnostics).find(text), std::string::npos) << said(diagnostics);
    }
}

}  // namespace
}  // namespace kesto
