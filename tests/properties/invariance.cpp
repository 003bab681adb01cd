// What must not change the result, to the bit.

#include <rapidcheck.h>

#include <algorithm>
#include <map>
#include <numeric>

#include "outcome.h"
#include "properties.h"
#include "random_model.h"
#include "simulation.h"

namespace {

rc::Gen<Model> networks(RandomOptions options) {
    return rc::gen::exec([options] {
        return makeRandomModel(options, [](int low, int end) { return *rc::gen::inRange(low, end); }).model;
    });
}

void requireSame(const Outcome& a, const Outcome& b) {
    if (a == b) return;
    RC_FAIL(difference(a, b));
}

// A run that fails says nothing about the rest of its steps.
void requireSuccess(const Outcome& one) {
    if (one.ending.starts_with("123456789 0 ")) return;
    RC_FAIL("the run failed: " + one.ending);
}

// Other ids with as many digits: some rules of the engine compare ids as text.
std::map<std::int32_t, std::int32_t> otherIds(const Model& model) {
    std::map<std::int32_t, std::int32_t> map;
    std::vector<std::int32_t> old = model.pots;
    for (const ComponentRow& row : model.components)
        old.push_back(idOf(row));
    const auto offsets = *rc::gen::unique<std::vector<std::int32_t>>(old.size(), rc::gen::inRange(1000000, 9999999));
    for (std::size_t i = 0; i < old.size(); ++i)
        map[old[i]] = offsets[i];
    map[0] = 0;  // the key of what belongs to no group
    return map;
}

Model renumbered(Model model, const std::map<std::int32_t, std::int32_t>& map) {
    const auto renumber = [&](std::int32_t& id) { id = map.at(id); };
    for (ComponentRow& row : model.components) {
        row.id = static_cast<float>(map.at(idOf(row)));
        row.key = static_cast<float>(map.at(static_cast<std::int32_t>(row.key)));
    }
    for (ConnectionRow& row : model.connections) {
        renumber(row.senderId);
        renumber(row.receiverId);
    }
    for (std::int32_t& id : model.pots)
        renumber(id);
    for (auto& table : model.series)
        for (NamedSeries& series : table)
            renumber(series.id);
    for (Split& split : model.splits) {
        renumber(split.id);
        for (std::int32_t& member : split.members)
            renumber(member);
    }
    return model;
}

bool renumbering() {
    return rc::check("ids renumbered, with as many digits: the same bits", [] {
        const Model model = *networks({});
        const auto map = otherIds(model);
        std::map<std::int32_t, std::string> names;
        for (const auto& [old, fresh] : map)
            names[fresh] = std::to_string(old);
        const Outcome before = outcome(model);
        requireSuccess(before);
        requireSame(before, outcome(renumbered(model, map), [&](std::int32_t id) { return names.at(id); }));
    });
}

// A random order in which rows of one kind keep theirs.
template <class Row, class Kind>
std::vector<Row> shuffledWithin(const std::vector<Row>& rows, Kind kindOf) {
    std::vector<std::size_t> slots(rows.size());
    std::iota(slots.begin(), slots.end(), std::size_t{0});
    for (std::size_t i = slots.size(); i > 1; --i)
        std::swap(slots[i - 1], slots[*rc::gen::inRange<std::size_t>(0, i)]);
    // Slots that one kind has been dealt are given out to it in ascending order.
    std::map<decltype(kindOf(rows.front())), std::vector<std::size_t>> dealt;
    for (std::size_t i = 0; i < rows.size(); ++i)
        dealt[kindOf(rows[i])].push_back(slots[i]);
    std::vector<Row> result(rows.size());
    for (auto& [kind, places] : dealt)
        std::sort(places.begin(), places.end(), std::greater<>());
    for (const Row& row : rows) {
        auto& places = dealt[kindOf(row)];
        result[places.back()] = row;
        places.pop_back();
    }
    return result;
}

// The components in the order of calculation.
std::vector<ComponentRow> inOrder(const Model& model) {
    std::vector<std::int32_t> order;
    CalcSequence(model.connections.data(), static_cast<std::int32_t>(model.connections.size()), model.components.data(),
                 static_cast<std::int32_t>(model.components.size()), order);
    std::vector<ComponentRow> rows = model.components;
    const auto placeOf = [&](const ComponentRow& row) { return std::find(order.begin(), order.end(), idOf(row)); };
    std::sort(rows.begin(), rows.end(), [&](const auto& a, const auto& b) { return placeOf(a) < placeOf(b); });
    return rows;
}

Model shuffled(const Model& model) {
    Model result = model;
    result.components = inOrder(model);
    result.connections = shuffledWithin(model.connections, [](const ConnectionRow& row) { return row.senderId; });
    result.specifications = shuffledWithin(model.specifications, [](const SpecificationRow& row) { return row.brand; });
    result.pots = shuffledWithin(model.pots, [](std::int32_t id) { return id; });
    for (std::size_t i = 0; i < model.series.size(); ++i)
        result.series[i] = shuffledWithin(model.series[i], [](const NamedSeries& series) { return series.id; });
    result.splits = shuffledWithin(model.splits, [](const Split& split) { return split.id; });
    return result;
}

bool shuffling() {
    return rc::check("rows shuffled so that the order of calculation stays: the same bits", [] {
        const Model model = *networks({.loops = false, .reservoirs = false});
        const Outcome before = outcome(model);
        requireSuccess(before);
        requireSame(before, outcome(shuffled(model)));
    });
}

bool anotherProcess() {
    return rc::check("the same run in another process: the same bits", [] {
        const Model model = *networks({.odd = true});
        requireSame(outcome(model), outcome(model));
    });
}

bool secondCall() {
    return rc::check("a second call, its states put back: the same bits", [] {
        const Model model = *networks({.radiation = false});
        const auto both = outcomes(model, {{1, model.nSteps}, {1, model.nSteps, true}});
        RC_ASSERT(both.size() == 2U);
        requireSuccess(both[0]);
        requireSame(both[0], both[1]);
    });
}

// The steps of both calls put together; states stand complete after the second.
Outcome joined(const Outcome& first, const Outcome& second, std::int32_t cut) {
    Outcome whole = second;
    for (auto& [name, values] : whole.values) {
        if (name.starts_with("Wat") && !name.starts_with("WatBod")) continue;
        const auto& before = first.values.at(name);
        std::copy(before.begin(), before.begin() + cut, values.begin());
    }
    return whole;
}

bool cutInTwo() {
    return rc::check("a run cut into two calls: the same bits", [] {
        const Model model = *networks({.delays = false, .radiation = false});
        const std::int32_t cut = *rc::gen::inRange(0, model.nSteps + 1);
        const auto parts = outcomes(model, {{1, cut}, {cut + 1, model.nSteps}});
        RC_ASSERT(parts.size() == 2U);
        const Outcome whole = outcome(model);
        requireSuccess(whole);
        requireSame(whole, joined(parts[0], parts[1], cut));
    });
}

}  // namespace

bool checkInvariance() {
    bool all = renumbering();
    all = shuffling() && all;
    all = anotherProcess() && all;
    all = secondCall() && all;
    return cutInTwo() && all;
}
