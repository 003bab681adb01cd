#include "record_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

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

void add(std::vector<OutputPort>& outputs, OutputPort output) {
    if (std::find(outputs.begin(), outputs.end(), output) == outputs.end()) outputs.push_back(output);
}

void addNamed(const Model& model, const std::string& text, Diagnostics& diagnostics, std::vector<OutputPort>& outputs) {
    const Place place{std::make_shared<const std::string>("--record " + text), 0, 0};
    const std::size_t colon = text.find(':');
    const std::string name = text.substr(0, colon);
    const int component = model.findComponent(name);
    if (component < 0) {
        diagnostics.error(
            place, fmt::format("there is no component \"{}\"{}", name, suggestion(name, model.componentNames())));
        return;
    }
    const Type& type = *model.components[static_cast<std::size_t>(component)].type;
    std::vector<std::string_view> names;
    for (const Port& port : type.out) {
        names.push_back(port.name);
    }
    if (colon == std::string::npos) {
        for (int port = 1; port <= static_cast<int>(names.size()); ++port) {
            add(outputs, {component, port});
        }
        return;
    }
    const std::string wanted = text.substr(colon + 1);
    if (const auto port = portNumber(type.out, wanted)) {
        add(outputs, {component, *port});
    } else if (names.empty()) {
        diagnostics.error(place, fmt::format("a {} has no output", type.name));
    } else {
        diagnostics.error(place, fmt::format("a {} has no output \"{}\"; it has {}{}", type.name, wanted,
                                             listOf(names, "and"), suggestion(wanted, names)));
    }
}

}  // namespace

std::vector<OutputPort> parseRecordChoice(const Model& model, const std::string& text, Diagnostics& diagnostics) {
    if (text == "all") return allOutputs(model);
    std::vector<OutputPort> outputs;
    if (text == "none") return outputs;
    for (const std::string& part : splitAtCommas(text)) {
        addNamed(model, part, diagnostics, outputs);
    }
    return outputs;
}

void reportRefusals(const Model& model, const RecordingPlan& plan, bool byName, Diagnostics& diagnostics) {
    const Place place{std::make_shared<const std::string>(model.path), 0, 0};
    for (const Refusal& refusal : plan.refused) {
        const Component& component = model.components[static_cast<std::size_t>(refusal.output.component)];
        const std::string text = fmt::format("\"{}\" is not recorded, since that would change results: {}",
                                             outputName(component, refusal.output.port), refusal.reason);
        if (byName) {
            diagnostics.error(place, text);
        } else {
            diagnostics.warning(place, text);
        }
    }
}

}  // namespace kesto
