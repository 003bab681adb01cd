#include <fmt/format.h>

#include <iostream>

#include "commands.h"
#include "figure_list.h"

namespace kesto {

int figuresCommand(const FiguresOptions& options) {
    if (options.json) {
        std::cout << figuresJson();
        return kGood;
    }
    for (const FigureInfo& figure : allFigures()) {
        std::cout << fmt::format("{:<26} {:<5} {}; of {}\n", figure.name, figure.unit, figure.meaning,
                                 namesOf(figure.of));
    }
    return kGood;
}

}  // namespace kesto
