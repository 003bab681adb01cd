#include "random_tables.h"

namespace {

constexpr int kHighestSpecification = 63;
constexpr float kTooHot = 40.0F;

}  // namespace

// With a pattern all series of a table have the same values.
void RandomTables::add(std::int32_t id, const Range& range, std::size_t perStep) {
    std::vector<float>& pattern = patterns_[static_cast<std::size_t>(range.table)];
    std::vector<float> values = pattern;
    if (values.empty()) values = draw_.values(static_cast<std::size_t>(model_.nSteps) * perStep, range.low, range.high);
    if (options_.pattern > 0) pattern = values;
    model_.table(range.table).push_back({id, std::move(values)});
}

void RandomTables::addGroup(std::int32_t key) {
    if (key != 0) model_.pots.push_back(key);
    add(key, {Table::FreqSer, 0, 5}, kAppliances);
    for (const Range& range : {Range{Table::Rainfall, 0, 20}, Range{Table::Temp, -5, 25}, Range{Table::Wind, 0, 30},
                               Range{Table::Occup, 0, 5}, Range{Table::Dmdflct, 0, 2}, Range{Table::Tmin, -15, 20},
                               Range{Table::Tmax, 0, 15}})
        add(key, range);
    const std::vector<float>& low = model_.table(Table::Tmin).back().values;
    std::vector<float>& high = model_.table(Table::Tmax).back().values;
    for (std::size_t k = 0; k < low.size() && !options_.value; ++k)
        high[k] += low[k];
    if (draw_.oddOneIn(10)) spoilLastGroup();
}

void RandomTables::spoilLastGroup() {
    draw_.anyOf(model_.table(Table::Tmin).back().values) = kTooHot;
}

void RandomTables::addBrand(int brand) {
    const std::vector<float> shares = draw_.values(kHighestSpecification, 0, 1);
    const int missing = draw_.oddOneIn(12) ? draw_.between(1, kHighestSpecification) : 0;
    for (int number = 1; number <= kHighestSpecification; ++number) {
        const bool isAmount = (number == 1 || number > 60 || number % 8 == brand) && !options_.value;
        const float share = shares[static_cast<std::size_t>(number) - 1];
        if (number != missing)
            addSpecification(model_, static_cast<float>(brand), number, isAmount ? 1.0F + 49.0F * share : share);
    }
}

void RandomTables::addComponent(std::int32_t id) {
    for (const Range& range : {Range{Table::WatQuant, 0, 20}, Range{Table::WatQual, 0, 20}, Range{Table::InsDmd, 0, 20},
                               Range{Table::Threshold, -50, 50}, Range{Table::Multpls, 0, 2}})
        add(id, range);
}
