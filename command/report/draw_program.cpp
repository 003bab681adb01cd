#include <fmt/format.h>

#include <stdexcept>

#include "draw.h"
#include "programs.h"

namespace kesto {

std::string renderGraph(const std::string& dot, const std::string& format) {
    const ProgramRun run = runProgram({"dot", "-T" + format}, dot);
    if (!run.isFound) {
        throw std::runtime_error(fmt::format("the program \"dot\" of Graphviz was not found; {}", installGraphviz()));
    }
    if (!run.succeeded) throw std::runtime_error(fmt::format("\"dot -T{}\" failed: {}", format, run.errors));
    return run.output;
}

}  // namespace kesto
