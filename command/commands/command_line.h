// The command line: the subcommands with their options, and what --help says of them.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <vector>

#include "commands.h"

namespace kesto {

// What subcommands are given.
struct CommandLine {
    RunOptions run;
    CheckOptions check;
    TypesOptions types;
    CodesOptions codes;
    FiguresOptions figures;
    NewOptions create;
    DrawOptions draw;
    SweepOptions sweep;
    CompareOptions compare;
    ReportOptions report;
};

struct Subcommand {
    const CLI::App* app;  // true when it was given
    std::function<int()> run;
};

// Declares all of them. `line` is filled when `app` parses the arguments, and must live as long as what is returned.
std::vector<Subcommand> addSubcommands(CLI::App& app, CommandLine& line);

}  // namespace kesto
