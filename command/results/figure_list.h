// The figures that a run derives from what it recorded: one list for files, summaries and docs.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "catalogue.h"

namespace kesto {

// What a figure is of: the network, or components of certain types.
enum class FigureOf : std::uint8_t { network, service, evaporation, peak };
bool has(const Type& type, FigureOf of);

struct FigureInfo {
    FigureOf of;
    std::string_view name;
    std::string_view unit;
    std::string_view meaning;
    bool isDated = false;  // it comes with the first and the last day on which it holds
};

// In the order in which they are written.
std::span<const FigureInfo> allFigures();
const FigureInfo& figureInfo(std::string_view name);

// "network", or the names of types.
std::string namesOf(FigureOf of);

// The list for other programs, and for the tables of the docs.
std::string figuresJson();

}  // namespace kesto
