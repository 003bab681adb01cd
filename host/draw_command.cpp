#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <iostream>

#include "commands.h"
#include "draw.h"
#include "files.h"
#include "load.h"

namespace kesto {

int drawCommand(const DrawOptions& options) {
    constexpr std::array<std::string_view, 4> kFormats{"svg", "png", "pdf", "dot"};
    std::string format = std::filesystem::path(options.output).extension().string();
    std::transform(format.begin(), format.end(), format.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (!format.empty()) format.erase(0, 1);
    if (std::find(kFormats.begin(), kFormats.end(), format) == kFormats.end()) {
        std::cerr << fmt::format("kesto draw: error: {}: expected a name that ends with .svg, .png, .pdf or .dot\n",
                                 options.output);
        return kBadModel;
    }
    const LoadedModel loaded(options.model);
    loaded.diagnostics().print(std::cerr, false);
    if (!loaded.isFit()) return kBadModel;

    const std::string dot = networkDot(loaded.model());
    writeFile(options.output, format == "dot" ? dot : renderGraph(dot, format));
    return kGood;
}

}  // namespace kesto
