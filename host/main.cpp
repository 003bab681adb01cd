#include <CLI/CLI.hpp>
#include <iostream>

#include "commands.h"

int main(int argc, char** argv) {
    CLI::App app{"KESTO: simulates the urban water cycle of a model, day by day"};
    app.require_subcommand(1);

    kesto::RunOptions run;
    CLI::App* runCommand = app.add_subcommand("run", "Run a model, print a summary and write the results");
    runCommand->add_option("model", run.model, "Model file (TOML)")->required();
    runCommand->add_option("-o,--output", run.output, "Folder for the results (CSV)");

    try {
        app.parse(argc, argv);
        return kesto::runCommand(run);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kesto::kGood : kesto::kBadModel;
    } catch (const std::exception& error) {
        std::cerr << "kesto: error: " << error.what() << '\n';
        return kesto::kRunFailed;
    }
}
