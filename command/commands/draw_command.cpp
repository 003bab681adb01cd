#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "commands.h"
#include "display.h"
#include "draw.h"
#include "files.h"
#include "load.h"
#include "output_file.h"
#include "results.h"

namespace kesto {

namespace {

struct Format {
    std::string_view name;
    std::string_view begins;  // how a file of it does
};
constexpr std::array<Format, 4> kFormats{{{"svg", "<?xml"}, {"png", "\x89PNG"}, {"pdf", "%PDF"}, {"dot", "digraph"}}};

std::string pictureOf(const std::string& dot, const std::string& format) {
    if (format == "dot") return dot;
    try {
        return renderGraph(dot, format);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(fmt::format("{}; -o NAME.dot writes the graph as text, without it", error.what()));
    }
}

std::string graphOf(const Model& model, bool all) {
    const std::size_t count = model.components.size();
    if (all || count <= kDrawable) return networkDot(model);
    std::cerr << fmt::format(
        "kesto draw: note: {} components are drawn by group; --all draws each of them, which can take minutes\n",
        withThousands(count));
    return groupsDot(model);
}

}  // namespace

int drawCommand(const DrawOptions& options) {
    std::string format = nameOf(pathOf(options.output).extension());
    std::transform(format.begin(), format.end(), format.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (!format.empty()) format.erase(0, 1);
    const auto known =
        std::find_if(kFormats.begin(), kFormats.end(), [&](const Format& f) { return f.name == format; });
    if (known == kFormats.end()) {
        std::cerr << fmt::format("kesto draw: error: {}: expected a name that ends with .svg, .png, .pdf or .dot\n",
                                 printable(options.output));
        return kBadModel;
    }
    const LoadedModel loaded(options.model, options.read);
    loaded.diagnostics().print(std::cerr, true);
    if (!loaded.isFit()) return kBadModel;

    if (const std::string why = whyNotOver(options.output, inputPaths(loaded.model()), {&known->begins, 1});
        !why.empty()) {
        std::cerr << fmt::format("kesto draw: error: {}\n", printable(why));
        return kBadModel;
    }
    replaceFile(options.output, pictureOf(graphOf(loaded.model(), options.all), format));
    return kGood;
}

}  // namespace kesto
