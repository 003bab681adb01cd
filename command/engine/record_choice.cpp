#include "record_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <set>

namespace kesto {

namespace {

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

// Each output once, in the order in which it was asked for.
class Choice {
  public:
    void add(OutputPort output) {
        if (known_.insert(output).second) outputs.push_back(output);
    }
    std::vector<OutputPort> outputs;

  private:
    std::set<OutputPort> known_;
};

void addNamed(const Model& model, const std::string& text, Diagnostics& diagnostics, Choice& choice) {
    const Place place{std::make_shared<const std::string>("--record " + text), 0, 0};
    const std::size_t colon = text.find(':');
    const std::string name = text.substr(0, colon);
    const int component = model.findComponent(name);
    if (component < 0) {
        diagnostics.error("unknown-name", place,
                          fmt::format("there is no component \"{}\"{}", name,
                                      diagnostics.suggest(name, [&] { return model.componentNames(); })));
        return;
    }
    const Type& type = *model.components[static_cast<std::size_t>(component)].type;
    const std::vector<std::string_view> names = portNames(type.out);
    if (colon == std::string::npos) {
        for (int port = 1; port <= static_cast<int>(names.size()); ++port) {
            choice.add({component, port});
        }
        return;
    }
    const std::string wanted = text.substr(colon + 1);
    if (const auto port = portNumber(type.out, wanted)) {
        choice.add({component, *port});
    } else if (names.empty()) {
        diagnostics.error("unknown-name", place, fmt::format("a {} has no output", type.name));
    } else {
        diagnostics.error("unknown-name", place,
                          fmt::format("a {} has no output \"{}\"; it has {}{}", type.name, wanted, listOf(names, "and"),
                                      diagnostics.suggest(wanted, [&] { return names; })));
    }
}

}  // namespace

std::vector<OutputPort> parseRecordChoice(const Model& model, const std::string& text, Diagnostics& diagnostics) {
    if (text == "all") return allOutputs(model);
    Choice choice;
    if (text == "none") return {};
    for (const std::string& part : splitAtCommas(text)) {
        addNamed(model, part, diagnostics, choice);
    }
    return choice.outputs;
}

std::vector<Refusal> refusedOf(const RecordingPlan& plan, const std::vector<OutputPort>& asked) {
    const std::set<OutputPort> wanted(asked.begin(), asked.end());
    std::vector<Refusal> refused = plan.refused;
    std::erase_if(refused, [&](const Refusal& refusal) { return !wanted.contains(refusal.output); });
    return refused;
}

// One message for all outputs that are refused for the same reason: in some models that is every one.
void reportRefusals(const Model& model, const std::vector<Refusal>& refused, bool byName, Diagnostics& diagnostics) {
    std::vector<std::pair<std::string_view, std::vector<OutputPort>>> reasons;
    for (const Refusal& refusal : refused) {
        const auto known =
            std::find_if(reasons.begin(), reasons.end(), [&](const auto& one) { return one.first == refusal.reason; });
        if (known == reasons.end()) {
            reasons.push_back({refusal.reason, {refusal.output}});
        } else {
            known->second.push_back(refusal.output);
        }
    }
    const auto componentOf = [&](OutputPort output) -> const Component& {
        return model.components[static_cast<std::size_t>(output.component)];
    };
    for (const auto& [reason, outputs] : reasons) {
        std::vector<std::string> names;
        for (const OutputPort output : outputs) {
            names.push_back(fmt::format("\"{}\"", outputName(componentOf(output), output.port)));
        }
        const std::string text =
            fmt::format("{} {} not recorded, since that would change results: {}",
                        listOf({names.begin(), names.end()}, "and"), names.size() == 1 ? "is" : "are", reason);
        const Place& place = componentOf(outputs.front()).place;
        if (byName) {
            diagnostics.error("cannot-record", place, text);
        } else {
            diagnostics.warning("not-recorded", place, text);
        }
    }
}

}  // namespace kesto
