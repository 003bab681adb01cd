// The figures that a run derives from what it recorded: one list for files, summaries and docs.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "catalogue.h"

namespace kesto {

// What a figure is of: the network, its costs, what it saves against a baseline; components of certain types, those
// with capital, sources that have a group of their own.
enum class FigureOf : std::uint8_t { network, money, savings, service, evaporation, peak, capital, source };
bool isOfNetwork(FigureOf of);
bool has(const Type& type, FigureOf of);

struct FigureInfo {
    FigureOf of;
    std::string_view name;
    std::string_view unit;  // "money" in it stands for the currency of the model
    std::string_view meaning;
    bool isDated = false;  // it comes with the first and the last day on which it holds
};

// In the order in which they are written.
std::span<const FigureInfo> allFigures();
const FigureInfo& figureInfo(std::string_view name, bool ofNetwork = false);

// "network", or the names of types.
std::string namesOf(FigureOf of);

// The list for other programs, and for the tables of the docs.
std::string figuresJson();

}  // namespace kesto
