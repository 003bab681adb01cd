#include <fmt/format.h>

#include <iostream>

#include "catalogue.h"
#include "commands.h"
#include "diagnostics.h"
#include "display.h"
#include "types_json.h"

namespace kesto {

namespace {

std::string unit(std::string_view unit) {
    return unit.empty() || unit == "-" ? "" : fmt::format(" [{}]", unit);
}

std::string rangeOf(const Range& range) {
    return range.isAny() ? "" : ", " + toText(range);
}

std::string codes(const Type& type) {
    std::string text;
    for (const int code : type.codes) {
        text += (text.empty() ? "" : ", ") + std::to_string(code);
    }
    return text;
}

void printPorts(std::string_view side, const std::vector<Port>& ports, bool any) {
    if (any) std::cout << fmt::format("{}  any number on {}\n", side, ports[0].name);
    for (std::size_t i = 0; i < ports.size() && !any; ++i) {
        const char* carries = ports[i].carries == Carries::water ? "water" : "demand";
        std::cout << fmt::format("{} {}  {:<12} {}{}: {}\n", side, i + 1, ports[i].name,
                                 ports[i].carries == Carries::same ? "" : fmt::format("({}) ", carries), ports[i].unit,
                                 ports[i].meaning);
    }
}

void printSeries(const Type& type) {
    for (const SeriesNeed& need : type.series) {
        const SeriesKindInfo& kind = info(need.kind);
        std::string name(need.isState ? "initial_" : "");
        name += need.alias.empty() ? kind.name : need.alias;
        std::string note = need.filing == Filing::own ? "its own" : "of its group";
        if (need.isState) note = "state, default 0";
        if (need.onlyTracing) note += ", only with trace_sources";
        std::cout << fmt::format("series    {:<22}{} {}\n", name, unit(need.unit.empty() ? kind.unit : need.unit),
                                 note);
    }
}

void printType(const Type& type) {
    std::cout << fmt::format("{}\n{}\nfamily {}, engine's code {}{}\n\n", type.name, type.summary, type.family,
                             codes(type), type.tag.empty() ? "" : fmt::format(", tag {}", type.tag));
    if (type.isAppliance()) std::cout << fmt::format("kind      one of {}\n", codes(type));
    printPorts("input ", type.in, type.anyInputs);
    printPorts("output", type.out, false);
    if (!type.size.meaning.empty()) {
        std::cout << fmt::format("size      {}{}{}{}\n", type.size.meaning, unit(type.size.unit),
                                 rangeOf(type.size.range),
                                 type.size.standard ? fmt::format(", default {}", *type.size.standard) : "");
    }
    for (const Parameter& parameter : type.parameters) {
        std::cout << fmt::format("brand {:>3} {:<22}{} {}{}{}\n", parameter.number, parameter.name,
                                 unit(parameter.unit), parameter.meaning, rangeOf(parameter.range),
                                 parameter.standard ? fmt::format(", default {}", *parameter.standard) : "");
    }
    printSeries(type);
    if (type.reservoirs > 0) {
        std::cout << fmt::format("needs     {} reservoir{} in its group{}\n", type.reservoirs,
                                 type.reservoirs == 1 ? "" : "s", type.reservoirsOptional ? ", but runs without" : "");
    }
    if (type.usesLatitude) std::cout << "needs     latitude in [simulation]\n";
    if (type.dailyOnly) std::cout << "needs     a time_step of one day\n";
    std::cout << fmt::format("balance   {}\n", type.balance.isOfWater() ? type.balance.identity : "no water passes it");
    for (const BalanceTerm& term : type.balance.terms) {
        std::cout << fmt::format("  {:<19} {}\n", toText(term.term), term.meaning);
    }
    for (const Potential potential : type.potentials) {
        std::cout << fmt::format("books     {}{}\n", info(potential).name,
                                 unit(type.booksDepth ? "mm" : info(potential).unit));
    }
}

}  // namespace

int typesCommand(const TypesOptions& options) {
    if (options.type.empty() && options.json) {
        std::cout << typesJson(allTypes());
        return kGood;
    }
    if (options.type.empty()) {
        for (const Type& type : allTypes()) {
            std::cout << fmt::format("{:<23} {:<3} {}\n", type.name, type.tag, type.summary);
        }
        return kGood;
    }
    const Type* type = findType(options.type);
    if (!type) {
        std::cerr << fmt::format("kesto types: there is no type \"{}\"{}\n", printable(options.type),
                                 suggestion(options.type, typeNames()));
        return kBadModel;
    }
    if (options.json) {
        std::cout << typesJson({*type});
    } else {
        printType(*type);
    }
    return kGood;
}

}  // namespace kesto
