#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "carriers.h"
#include "fields.h"
#include "multiplicity.h"
#include "page_parts.h"

namespace kesto {

namespace {

constexpr std::size_t kDetailed = 100;  // components of larger networks with their values and figures
constexpr std::size_t kListed = 300;    // connections of larger networks are packed

std::string shown(double value) {
    return fmt::format("{:.6g}", value);
}

class NetworkData {
  public:
    NetworkData(const PageSource& source, const Json& summary)
        : model_(*source.model), view_(model_), multiplicity_(view_, *source.series) {
        const auto flows = summary.find("flows");
        if (flows == summary.end()) return;
        for (const Json& flow : *flows) {
            if (flow.at("total").is_number())
                totals_[flow.at("name").get<std::string>()] = flow.at("total").get<double>();
        }
    }

    Json take(bool isDrawn, const Json& summary, const Json& overview) {
        Json network{{"drawing", isDrawn}};
        network["types"] = types();
        network["groups"] = groups();
        network["components"] = components();
        if (model_.components.size() <= kListed) {
            network["links"] = links();
        } else {
            network["packed_links"] = packedLinks();
        }
        network["details"] = details(summary, overview);
        network["group_links"] = groupLinks();
        return network;
    }

  private:
    Json types() {
        Json types = Json::array();
        for (const Component& component : model_.components) {
            const Type& type = *component.type;
            if (!typeIndex_.emplace(type.name, static_cast<int>(types.size())).second) continue;
            types.push_back({{"name", type.name},
                             {"family", toText(fieldOf(type))},
                             {"in", portNames(type.in)},
                             {"out", portNames(type.out)}});
        }
        return types;
    }

    Json groups() {
        std::vector<std::map<std::string_view, int>> counts(model_.groups.size());
        for (const Component& component : model_.components) {
            if (component.group >= 0) ++counts[at(component.group)][component.type->name];
        }
        Json groups = Json::array();
        for (std::size_t i = 0; i < model_.groups.size(); ++i) {
            int count = 0;
            Json types = Json::object();
            for (const auto& [type, number] : counts[i]) {
                types[std::string(type)] = number;
                count += number;
            }
            groups.push_back({{"name", model_.groups[i].name}, {"components", count}, {"types", std::move(types)}});
        }
        return groups;
    }

    Json components() {
        Json components = Json::array();
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            const Component& component = model_.components[i];
            Json row{component.name, typeIndex_.at(component.type->name), std::max(component.group, -1)};
            const double times = multiplicity_.of(static_cast<int>(i)).greatest;
            if (times != 1) row.push_back(times);
            components.push_back(std::move(row));
        }
        return components;
    }

    bool isDemand(const Connection& connection) const {
        return view_.carriers().ofOutput(connection.from, connection.fromPort) == Carries::demand;
    }

    std::optional<double> litresOf(const Connection& connection) const {
        const auto found = totals_.find(outputName(model_.components[at(connection.from)], connection.fromPort));
        if (found == totals_.end()) return std::nullopt;
        return found->second * multiplicity_.of(connection.from).greatest;
    }

    Json links() const {
        Json links = Json::array();
        for (const Connection& connection : model_.connections) {
            const auto name = [&](int component, const std::vector<Port>& ports, int port) {
                return Json::array({component, portName(ports, port)});
            };
            const Json from =
                name(connection.from, model_.components[at(connection.from)].type->out, connection.fromPort);
            const Json to = name(connection.to, model_.components[at(connection.to)].type->in, connection.toPort);
            Json link{from[0], from[1], to[0], to[1], isDemand(connection) ? 1 : 0};
            if (const auto litres = litresOf(connection)) link.push_back(*litres);
            links.push_back(std::move(link));
        }
        return links;
    }

    std::string packedLinks() const {
        std::vector<std::int32_t> numbers;
        for (const Connection& connection : model_.connections) {
            numbers.insert(numbers.end(),
                           {connection.from, connection.to,
                            connection.fromPort + 4 * connection.toPort + (isDemand(connection) ? 16 : 0)});
        }
        return packed(std::span<const std::int32_t>(numbers));
    }

    Json groupLinks() const {
        struct Sum {
            double litres = 0;
            int count = 0;
        };
        std::map<std::array<int, 3>, Sum> sums;
        for (const Connection& connection : model_.connections) {
            const auto groupOf = [&](int component) { return std::max(model_.components[at(component)].group, -1); };
            const int from = groupOf(connection.from), to = groupOf(connection.to);
            if (from == to) continue;
            Sum& sum = sums[{from, to, isDemand(connection) ? 1 : 0}];
            sum.litres += litresOf(connection).value_or(0);
            ++sum.count;
        }
        Json links = Json::array();
        for (const auto& [key, sum] : sums) {
            links.push_back({key[0], key[1], key[2], std::round(sum.litres), sum.count});
        }
        return links;
    }

    // Of all components of a small network; else of those whose series the page has, and of some that have figures.
    Json details(const Json& summary, const Json& overview) const {
        std::map<std::string, Json, std::less<>> figures;
        if (const auto rows = summary.find("figures"); rows != summary.end()) {
            for (const Json& row : *rows) {
                const std::string name = row.at("name").get<std::string>();
                const std::size_t dot = name.rfind('.');
                if (dot == std::string::npos || row.at("value").is_null()) continue;
                figures[name.substr(0, dot)].push_back({name.substr(dot + 1), row.at("value"), row.at("unit")});
            }
        }
        std::set<int> wanted;
        for (const Json& row : overview.value("shown", Json::array())) {
            const std::string name = row.at("name").get<std::string>();
            wanted.insert(model_.findComponent(name.substr(0, name.find(':'))));
        }
        for (int i = 0; i < static_cast<int>(model_.components.size()); ++i) {
            const bool isSmall = model_.components.size() <= kListed;
            if (isSmall || (wanted.size() < kDetailed && figures.contains(model_.components[at(i)].name)))
                wanted.insert(i);
        }
        wanted.erase(-1);  // potentials are of groups
        Json details = Json::object();
        for (const int i : wanted) {
            Json detail{{"values", valuesOf(i)}};
            const auto found = figures.find(model_.components[at(i)].name);
            if (found != figures.end()) detail["figures"] = found->second;
            details[std::to_string(i)] = std::move(detail);
        }
        return details;
    }

    Json valuesOf(int index) const {
        const Component& component = model_.components[at(index)];
        const Type& type = *component.type;
        Json values = Json::array();
        const auto add = [&](std::string_view key, const std::string& text) { values.push_back({key, text}); };
        if (component.hasSize) add("size", fmt::format("{} {}", shown(component.size), type.size.unit));
        if (component.brand >= 0) {
            const Brand& brand = model_.brands[at(component.brand)];
            add("brand", brand.name);
            for (const auto& [number, value] : brand.specifications) {
                const Parameter* parameter = findParameter(type, number);
                if (!parameter) continue;
                const std::string_view unit = parameter->unit == "-" ? std::string_view() : parameter->unit;
                add(parameter->name, shown(value.value) + (unit.empty() ? "" : " ") + std::string(unit));
            }
        }
        if (const Factor& factor = multiplicity_.of(index); factor.greatest != 1) {
            add("stands for", factor.series.empty() ? shown(factor.constant) : "up to " + shown(factor.greatest));
        }
        return values;
    }

    const Model& model_;
    NetworkView view_;
    Multiplicity multiplicity_;
    std::map<std::string, double, std::less<>> totals_;
    std::map<std::string_view, int> typeIndex_;
};

}  // namespace

Json networkOf(const PageSource& source, const Json& summary, const Json& overview) {
    return NetworkData(source, summary).take(source.isDrawn, summary, overview);
}

}  // namespace kesto
