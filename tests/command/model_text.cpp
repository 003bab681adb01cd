#include "model_text.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <vector>

namespace kesto::test {

namespace {

int below(std::mt19937& random, std::size_t limit) {
    return static_cast<int>(random() % limit);
}

struct Output {
    std::string component;
    int port;
    Carries carries;
};

}  // namespace

bool isLong() {
    const char* const given = std::getenv("KESTO_TEST_LONG");
    return given && *given;
}

std::string componentText(const Type& type, int code, const std::string& name) {
    std::string text = fmt::format("[[components]]\nname = \"{}\"\ntype = {}\ngroup = \"g\"\n", name, code);
    if (!type.parameters.empty()) text += fmt::format("brand = \"b_{}\"\n", name);
    if (!type.size.meaning.empty()) text += code == code::kDelay ? "size = 2\n" : "size = 100\n";
    for (const SeriesNeed& need : type.series) {
        if (need.filing != Filing::own) continue;
        const char* prefix = need.isState ? "initial_" : "";
        text += fmt::format("{}{} = 5\n", prefix, info(need.kind).name);
    }
    return text;
}

std::string brandText(const Type& type, const std::string& name) {
    std::string text = fmt::format("[brands.b_{}]\n", name);
    for (const Parameter& parameter : type.parameters) {
        if (parameter.standard) continue;
        // Of its own for each number, and within the range of a fraction where it is one.
        const double value = parameter.number / (parameter.range.high == 1 ? 128.0 : 4.0);
        text += fmt::format("{} = {}\n", parameter.name, value);
    }
    return text;
}

std::string headText(int days, bool traceSources) {
    return fmt::format(
        "kesto_model = 1\n[simulation]\nstart = 2015-12-{:02}\nend = 2015-12-31\nlatitude = 47\ntrace_sources = {}\n"
        "[groups.g]\noccupancy = 2\nuses = [1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1]\nrainfall = 8\ntemperature = 12\n"
        "temperature_min = 8\ntemperature_max = 16\nwind = 20\n",
        32 - days, traceSources);
}

std::string singleModel(const Type& type, int code, bool traceSources) {
    std::string text = headText(3, traceSources) + brandText(type, "x");
    const Type& source = *findType("demand_source");
    const Type& reservoir = *findType("reservoir");
    std::vector<std::string> connections;
    const int inputs = type.inputs() == kAnyInputs ? 1 : type.inputs();
    for (int i = 0; i < type.reservoirs; ++i) {
        text += brandText(reservoir, fmt::format("r{}", i));
    }
    text += componentText(type, code, "x");
    for (int port = 1; port <= inputs; ++port) {
        text += componentText(source, source.codes[0], fmt::format("s{}", port));
        connections.push_back(fmt::format("from = \"s{}\"\nto = \"x:{}\"", port, port));
    }
    for (int i = 0; i < type.reservoirs; ++i) {
        text += componentText(reservoir, reservoir.codes[0], fmt::format("r{}", i));
        for (int port = 1; port <= 2; ++port) {
            text += componentText(source, source.codes[0], fmt::format("r{}s{}", i, port));
            connections.push_back(fmt::format("from = \"r{}s{}\"\nto = \"r{}:{}\"", i, port, i, port));
        }
    }
    if (!type.out.empty()) {
        text += "[[components]]\nname = \"end\"\ntype = \"water_body\"\n";
        connections.push_back("from = \"x:1\"\nto = \"end\"");
    }
    for (const std::string& connection : connections) {
        text += "[[connections]]\n" + connection + "\n";
    }
    return text;
}

namespace {

// Which output a random network connects to an input: any, or one that carries what the input takes and that feeds
// nothing else.
class Choice {
  public:
    Choice(std::mt19937& random, Wiring wiring) : random_(random), wiring_(wiring) {}

    void offer(const Output& output) { outputs_.push_back(output); }

    std::optional<Output> forInput(Carries takes) {
        std::vector<std::size_t> fitting;
        for (std::size_t i = 0; i < outputs_.size(); ++i) {
            const bool isAlike = takes == Carries::same || outputs_[i].carries == takes;
            if (wiring_ == Wiring::any || isAlike) fitting.push_back(i);
        }
        if (fitting.empty()) return std::nullopt;
        const std::size_t chosen = fitting[static_cast<std::size_t>(below(random_, fitting.size()))];
        const Output output = outputs_[chosen];
        if (wiring_ == Wiring::meant) outputs_.erase(outputs_.begin() + static_cast<std::ptrdiff_t>(chosen));
        return output;
    }

  private:
    std::mt19937& random_;
    const Wiring wiring_;
    std::vector<Output> outputs_;
};

}  // namespace

// Receiving units and splitters often: they are what recording could disturb.
std::string randomModel(std::mt19937& random, int components, Wiring wiring) {
    return randomModel(random, components,
                       {{"treatment_plant", "service_reservoir", "splitter", "well", "delay", "multiplier"}, {}},
                       wiring);
}

std::string randomModel(std::mt19937& random, int components, const Mixture& mixture, Wiring wiring) {
    const auto isNever = [&](std::string_view type) {
        return std::any_of(mixture.never.begin(), mixture.never.end(),
                           [&](const std::string& one) { return one == type; });
    };
    std::string brands, rows, connections;
    Choice outputs(random, wiring);
    const std::vector<Type>& types = allTypes();
    // What the input then carries.
    const auto connect = [&](Carries takes, const std::string& to, int port) {
        const std::optional<Output> from = outputs.forInput(takes);
        if (!from) return takes;
        connections +=
            fmt::format("[[connections]]\nfrom = \"{}:{}\"\nto = \"{}:{}\"\n", from->component, from->port, to, port);
        return from->carries;
    };
    const Type& source = *findType("demand_source");
    const Type& reservoir = *findType("reservoir");
    const auto add = [&](const Type& type, const std::string& name) {
        const int code = type.codes[static_cast<std::size_t>(below(random, type.codes.size()))];
        if (!type.parameters.empty()) brands += brandText(type, name);
        const std::string row = componentText(type, code, name);
        rows = below(random, 3) == 0 ? row + rows : rows + row;  // not always in the order of the flow
        const int inputs = type.inputs() == kAnyInputs ? below(random, 3) : type.inputs();
        Carries passed = Carries::same;
        for (int port = 1; port <= inputs; ++port) {
            const int to = type.in.size() > 1 ? port : 1;
            const Carries takes = type.in[static_cast<std::size_t>(to) - 1].carries;
            passed = connect(takes == Carries::same ? passed : takes, name, to);
        }
        for (int port = 1; port <= static_cast<int>(type.out.size()); ++port) {
            const Carries gives = type.out[static_cast<std::size_t>(port) - 1].carries;
            outputs.offer({name, port, gives == Carries::same ? passed : gives});
        }
    };
    add(source, "s1");
    add(source, "s2");
    if (wiring == Wiring::meant) {
        for (const char* const name : {"w1", "w2", "w3", "w4"}) {
            add(*findType("impervious_surface"), name);
        }
        add(*findType("appliance"), "a1");
        add(*findType("appliance"), "a2");
    }
    add(reservoir, "r1");
    add(reservoir, "r2");
    // Loops: delays whose outputs are there from the start and whose inputs are connected at the end.
    const int loops = isNever("delay") ? 0 : below(random, 3);
    for (int i = 0; i < loops; ++i) {
        rows += componentText(*findType(code::kDelay), code::kDelay, fmt::format("loop{}", i));
        outputs.offer({fmt::format("loop{}", i), 1, Carries::water});
    }
    for (int i = 0; i < components; ++i) {
        const auto anyOf = [&](const auto& list) -> const auto& {
            return list[static_cast<std::size_t>(below(random, list.size()))];
        };
        const Type* type = below(random, 3) == 0 ? findType(anyOf(mixture.often)) : &anyOf(types);
        while (isNever(type->name)) {
            type = &anyOf(types);
        }
        add(*type, fmt::format("c{}", i));
    }
    for (int i = 0; i < loops; ++i) {
        connect(Carries::water, fmt::format("loop{}", i), 1);
    }
    return headText(8, below(random, 2) == 0) + brands + rows + connections;
}

std::string writeModel(const std::string& text) {
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() / fmt::format("kesto-command-tests-{}", getpid());
        std::filesystem::create_directories(path);
        return path;
    }();
    const std::string path = (folder / "model.toml").string();
    std::filesystem::remove(path);  // a file that is cut and written again waits for the disk on some systems
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

}  // namespace kesto::test
