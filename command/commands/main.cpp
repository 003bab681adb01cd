#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string_view>
#include <vector>

#include "command_line.h"
#include "diagnostics.h"
#include "display.h"
#include "engine_process.h"

namespace {

// The argument library would only say that a subcommand is missing.
bool isUnknownCommand(const CLI::App& app, std::string_view word) {
    std::vector<std::string_view> names;
    for (const CLI::App* command : app.get_subcommands({}))
        names.emplace_back(command->get_name());
    if (word.starts_with('-') || std::find(names.begin(), names.end(), word) != names.end()) return false;
    std::cerr << "kesto: error: there is no command \"" << kesto::printable(word) << "\"; kesto --help lists them"
              << kesto::suggestion(word, names) << '\n';
    return true;
}

// What was lost on its way out, as on a full disk, is a failure.
int written(int status) {
    std::cout.flush();
    if (std::cout) return status;
    std::cerr << "kesto: error: cannot write to the standard output\n";
    return status == kesto::kGood ? kesto::kRunFailed : status;
}

// An empty argument is a variable of a script that was not set.
void refuseEmpty(CLI::App& command) {
    for (CLI::Option* option : command.get_options()) {
        if (option->get_items_expected_max() == 0) continue;  // a flag
        option->check([](const std::string& value) { return value.empty() ? "expected a value, found nothing" : ""; });
    }
}

int runCommandLine(int argc, char** argv) {
    CLI::App app{"KESTO: simulates the urban water cycle of a model, day by day", "kesto"};
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/share/model.toml" is a path there, too
    app.set_version_flag("--version", "kesto " KESTO_VERSION);

    kesto::CommandLine line;
    const std::vector<kesto::Subcommand> subcommands = addSubcommands(app, line);
    for (CLI::App* command : app.get_subcommands({}))
        refuseEmpty(*command);
    if (argc > 1 && isUnknownCommand(app, argv[1])) return kesto::kBadModel;
    try {
        app.parse(argc, argv);
        for (const auto& [given, runSubcommand] : subcommands) {
            if (*given) return written(runSubcommand());
        }
        return kesto::kBadModel;  // not reached: one is required
    } catch (const CLI::ParseError& error) {
        std::ostringstream errors;
        const int status = app.exit(error, std::cout, errors) == 0 ? kesto::kGood : kesto::kBadModel;
        if (status != kesto::kGood) std::cerr << "kesto: error: ";
        std::cerr << kesto::printableLines(errors.str());
        return written(status);
    } catch (const std::bad_alloc&) {
        std::cerr << "kesto: error: memory ran out; \"kesto check MODEL\" says how much a run takes\n";
        return kesto::kRunFailed;
    } catch (const std::exception& error) {
        std::cerr << "kesto: error: " << kesto::printable(error.what()) << '\n';
        return kesto::kRunFailed;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int status = kesto::startProgram(argc, argv, runCommandLine);
    if (status != kesto::kRunFailed) return status;
    // On a full disk the NetCDF library is left with a file that it cannot close; its exit handler would crash on it.
    std::cout.flush();
    std::_Exit(status);
}
