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

namespace kesto {

namespace {

std::string pictureOf(const std::string& dot, const std::string& format) {
    if (format == "dot") return dot;
    try {
        return renderGraph(dot, format);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(fmt::format("{}; -o NAME.dot writes the graph as text, without it", error.what()));
    }
}

}  // namespace

int drawCommand(const DrawOptions& options) {
    constexpr std::array<std::string_view, 4> kFormats{"svg", "png", "pdf", "dot"};
    std::string format = std::filesystem::path(options.output).extension().string();
    std::transform(format.begin(), format.end(), format.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (!format.empty()) format.erase(0, 1);
    if (std::find(kFormats.begin(), kFormats.end(), format) == kFormats.end()) {
        std::cerr << fmt::format("kesto draw: error: {}: expected a name that ends with .svg, .png, .pdf or .dot\n",
                                 printable(options.output));
        return kBadModel;
    }
    const LoadedModel loaded(options.model, options.read);
    loaded.diagnostics().print(std::cerr, true);
    if (!loaded.isFit()) return kBadModel;

    writeFile(options.output, pictureOf(networkDot(loaded.model()), format));
    return kGood;
}

}  // namespace kesto
