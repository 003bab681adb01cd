#include "types_json.h"

#include <nlohmann/json.hpp>

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

Json orNull(const std::optional<double>& value) {
    return value ? Json(*value) : Json(nullptr);
}

// What lies beyond each end; null where nothing does.
Json limit(double value, Beyond beyond) {
    if (beyond == Beyond::allowed) return nullptr;
    return {{"value", value}, {"beyond", beyond == Beyond::error ? "error" : "warning"}};
}

Json rangeJson(const Range& range) {
    if (range.isAny()) return nullptr;
    return {{"text", toText(range)},
            {"low", limit(range.low, range.below)},
            {"high", limit(range.high, range.above)},
            {"in_a_step", range.perStep}};
}

Json portsOf(const std::vector<Port>& ports) {
    Json list = Json::array();
    for (const Port& port : ports) {
        list.push_back(
            {{"name", port.name}, {"carries", toText(port.carries)}, {"unit", port.unit}, {"meaning", port.meaning}});
    }
    return list;
}

Json outputsOf(const std::vector<Port>& ports) {
    Json list = portsOf(ports);
    for (std::size_t i = 0; i < ports.size(); ++i) {
        list[i]["quality"] = toText(ports[i].quality);
    }
    return list;
}

Json parametersOf(const Type& type) {
    Json list = Json::array();
    for (const Parameter& parameter : type.parameters) {
        list.push_back({{"number", parameter.number},
                        {"name", parameter.name},
                        {"unit", parameter.unit},
                        {"meaning", parameter.meaning},
                        {"range", rangeJson(parameter.range)},
                        {"standard", orNull(parameter.standard)}});
    }
    return list;
}

Json seriesOf(const Type& type) {
    Json list = Json::array();
    for (const SeriesNeed& need : type.series) {
        const SeriesKindInfo& kind = info(need.kind);
        list.push_back({{"kind", kind.name},
                        {"name", need.alias.empty() ? kind.name : need.alias},
                        {"filed_under", need.filing == Filing::own ? "component" : "group"},
                        {"unit", need.unit.empty() ? kind.unit : need.unit},
                        {"meaning", need.meaning.empty() ? kind.meaning : need.meaning},
                        {"range", rangeJson(rangeOf(need))},
                        {"is_state", need.isState},
                        {"only_with_trace_sources", need.onlyTracing}});
    }
    return list;
}

Json potentialsOf(const Type& type) {
    Json list = Json::array();
    for (const Potential potential : type.potentials) {
        list.push_back({{"name", info(potential).name}, {"unit", type.booksDepth ? "mm" : info(potential).unit}});
    }
    return list;
}

Json termsOf(const BalanceIdentity& balance) {
    Json list = Json::array();
    for (const BalanceTerm& term : balance.terms) {
        list.push_back({{"name", toText(term.term)}, {"meaning", term.meaning}});
    }
    return list;
}

Json sizeOf(const Size& size) {
    if (size.meaning.empty()) return nullptr;
    return {{"meaning", size.meaning},
            {"unit", size.unit},
            {"range", rangeJson(size.range)},
            {"standard", orNull(size.standard)}};
}

}  // namespace

std::string typesJson(const std::vector<Type>& types) {
    Json list = Json::array();
    for (const Type& type : types) {
        list.push_back({{"name", type.name},
                        {"tag", type.tag},
                        {"family", type.family},
                        {"codes", type.codes},
                        {"summary", type.summary},
                        {"any_number_of_inputs", type.anyInputs},
                        {"inputs", portsOf(type.in)},
                        {"outputs", outputsOf(type.out)},
                        {"size", sizeOf(type.size)},
                        {"parameters", parametersOf(type)},
                        {"series", seriesOf(type)},
                        {"potentials", potentialsOf(type)},
                        {"reservoirs", type.reservoirs},
                        {"needs_latitude", type.usesLatitude},
                        {"daily_steps_only", type.dailyOnly},
                        {"balance",
                         {{"carries", toText(type.balance.carries)},
                          {"identity", type.balance.identity},
                          {"terms", termsOf(type.balance)}}}});
    }
    return list.dump(2) + "\n";
}

}  // namespace kesto
