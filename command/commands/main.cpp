#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <new>
#include <sstream>
#include <string_view>
#include <vector>

#include "commands.h"
#include "diagnostics.h"
#include "display.h"
#include "engine_process.h"

namespace {

void addReadOptions(CLI::App& command, kesto::ReadOptions& options) {
    command.add_option("--scenario", options.scenarios, "Use the values of a scenario of the model; later ones win")
        ->allow_extra_args(false);
    command
        .add_option("--set", options.set,
                    "Replace a value of the model, as in --set tank.size=3000; wins over scenarios")
        ->allow_extra_args(false);
    command.add_option("--from", options.from,
                       "First day of the run, instead of the model's; it begins with the initial states, or those of "
                       "--states-from");
    command.add_option("--to", options.to, "Last day of the run, instead of the model's");
    command.add_option("--accept", options.accept, "Accept a warning, as in --accept \"no-input sewer\"")
        ->allow_extra_args(false);
}

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
    CLI::App app{"KESTO: simulates the urban water cycle of a model, day by day"};
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/share/model.toml" is a path there, too
    app.set_version_flag("--version", "kesto " KESTO_VERSION);

    kesto::RunOptions run;
    CLI::App* runCommand = app.add_subcommand("run", "Run a model, print a summary and write the results");
    runCommand->add_option("model", run.model, "Model file (TOML)")->required();
    runCommand->add_option("-o,--output", run.output, "Folder for the results");
    runCommand->add_option("--format", run.format, "Format of the results: csv (default) or netcdf")
        ->check(CLI::IsMember({"csv", "netcdf"}));
    runCommand->add_option("--compress", run.compression, "Compression of NetCDF, 0 (none, fastest) to 9; default 1")
        ->check(CLI::Range(0, 9));
    runCommand->add_flag("--balance", run.balance,
                         "Balance the water of each component, each group and the network; record what that needs");
    runCommand->add_flag("--strict", run.strict,
                         "Exit with 1 on any warning that is not accepted, and balance the water");
    runCommand->add_option("--record", run.record,
                           "Outputs to record: all (default), none, or a list such as "
                           "tank:overflow,roof");
    CLI::Option* statesFrom =
        runCommand->add_option("--states-from", run.read.statesFrom,
                               "Folder with results; the run goes on from the states of the day before it begins");
    runCommand
        ->add_flag("--approximate", run.read.approximate,
                   "Go on although the states do not hold all that components remember")
        ->needs(statesFrom);
    runCommand->add_flag("-q,--quiet", run.quiet, "Print errors only");
    runCommand->add_flag("--json", run.json, "Print the summary as JSON");
    runCommand->add_flag("--full", run.full, "Print all flows, figures and potentials, not only what fits a screen");
    addReadOptions(*runCommand, run.read);

    kesto::CheckOptions check;
    CLI::App* checkCommand = app.add_subcommand("check", "Report all errors and warnings of a model, and its size");
    checkCommand->add_option("model", check.model, "Model file (TOML)")->required();

    checkCommand->add_flag("--strict", check.strict, "Exit with 1 on any warning that is not accepted");
    checkCommand->add_flag("--json", check.json, "Print all faults as JSON");
    addReadOptions(*checkCommand, check.read);

    kesto::TypesOptions types;
    CLI::App* typesCommand = app.add_subcommand("types", "List the types of components, or describe one");
    typesCommand->add_option("type", types.type, "Name or tag of a type");
    typesCommand->add_flag("--json", types.json, "Print the whole catalogue as JSON");

    kesto::CodesOptions codes;
    CLI::App* codesCommand = app.add_subcommand("codes", "List the codes of warnings, notes and errors");
    codesCommand->add_flag("--json", codes.json, "Print them as JSON");

    kesto::FiguresOptions figures;
    CLI::App* figuresCommand = app.add_subcommand("figures", "List the figures that a run derives");
    figuresCommand->add_flag("--json", figures.json, "Print them as JSON");

    kesto::NewOptions create;
    CLI::App* newCommand =
        app.add_subcommand("new", "Write a small commented model to start from, and its schema for editors");
    newCommand->add_option("folder", create.folder, "Folder; created when it does not exist")->required();

    kesto::DrawOptions draw;
    CLI::App* drawCommand = app.add_subcommand("draw", "Draw the network of a model (needs Graphviz)");
    drawCommand->add_option("model", draw.model, "Model file (TOML)")->required();
    drawCommand->add_option("-o,--output", draw.output, "Picture: NAME.svg, .png, .pdf or, as text, .dot")->required();
    drawCommand->add_flag("--all", draw.all, "Draw each component, also of a network of more than 300");
    addReadOptions(*drawCommand, draw.read);

    kesto::SweepOptions sweep;
    CLI::App* sweepCommand = app.add_subcommand("sweep", "Run many members: a model with other values each");
    sweepCommand->add_option("model", sweep.model, "Model file (TOML)");
    sweepCommand->add_option("members_csv", sweep.table, "Table (CSV): a column for each key, a row for each member");
    sweepCommand->add_option("-o,--output", sweep.output, "Folder for the results")->required();
    sweepCommand
        ->add_option("--vary", sweep.vary,
                     "Values of a key, as in --vary \"tank.size=1 m3,2 m3\" or tank.size=500:8000:16 "
                     "(from, to, how many); several are crossed")
        ->allow_extra_args(false);
    sweepCommand->add_flag("--scenarios", sweep.scenarios, "Run the model and each of its scenarios");
    sweepCommand->add_option("--record", sweep.record,
                             "Outputs to record: none (default), all, or a list such as tank:overflow,roof");
    sweepCommand
        ->add_option("--format", sweep.format, "Format of what is recorded: netcdf (default, but on Windows) or csv")
        ->check(CLI::IsMember({"csv", "netcdf"}));
    sweepCommand->add_option("--every", sweep.every, "What is recorded: each day (default), month or year")
        ->check(CLI::IsMember({"day", "month", "year"}));
    sweepCommand->add_option("--figures", sweep.figures, "Figures: key (default), or all, of each component")
        ->check(CLI::IsMember({"key", "all"}));
    sweepCommand->add_option("--jobs", sweep.jobs, "Members that run at a time; default: one on each core")
        ->check(CLI::Range(1, 4096));
    sweepCommand->add_option("--members", sweep.members, "Run a slice of the members, as in --members 1-500");
    sweepCommand->add_flag("--restart", sweep.restart, "Begin anew where the folder holds a sweep");
    sweepCommand->add_option("--join", sweep.join, "Make one folder of those of slices, in place of a model");
    sweepCommand->add_flag("-q,--quiet", sweep.quiet, "Print errors only");
    sweepCommand->add_flag("--json", sweep.json, "Print the summary as JSON");
    addReadOptions(*sweepCommand, sweep.read);

    kesto::CompareOptions compare;
    CLI::App* compareCommand =
        app.add_subcommand("compare", "Put the figures of several runs, or of a sweep, side by side");
    compareCommand
        ->add_option("runs", compare.runs, "Folders with results of runs or sweeps, or a model and --scenarios")
        ->required();
    compareCommand->add_flag("--scenarios", compare.scenarios, "Run a model, and each of its scenarios");
    compareCommand->add_option("--members", compare.members,
                               "Members of sweeps, as in 1,5,9-12; default: the first six");
    compareCommand->add_flag("--all", compare.all, "Show figures that are the same in all runs, too");
    compareCommand->add_option("-o,--output", compare.output,
                               "File to write: NAME.html, a page with charts, or a table (CSV)");
    compareCommand->add_flag("--json", compare.json, "Print the comparison as JSON");
    addReadOptions(*compareCommand, compare.read);

    kesto::ReportOptions report;
    CLI::App* reportCommand = app.add_subcommand("report", "Make one page with charts of the results of a run");
    reportCommand->add_option("results", report.results, "Folder with the results")->required();
    reportCommand->add_option("-o,--output", report.output, "Page to write (HTML)")->required();
    reportCommand->add_option("--model", report.model, "Model file, if it has moved since the run");
    reportCommand
        ->add_option("--series", report.series,
                     "Series to have by day: all, or a list such as tank:overflow,roof; default: the 50 that matter")
        ->delimiter(',')
        ->allow_extra_args(false);

    CLI::App* schemaCommand = app.add_subcommand("schema", "Print the JSON Schema of model files, for editors");

    for (CLI::App* command : app.get_subcommands({}))
        refuseEmpty(*command);
    if (argc > 1 && isUnknownCommand(app, argv[1])) return kesto::kBadModel;
    try {
        app.parse(argc, argv);
        const int status = [&] {
            if (*runCommand) return kesto::runCommand(run);
            if (*checkCommand) return kesto::checkCommand(check);
            if (*codesCommand) return kesto::codesCommand(codes);
            if (*figuresCommand) return kesto::figuresCommand(figures);
            if (*newCommand) return kesto::newCommand(create);
            if (*sweepCommand) return kesto::sweepCommand(sweep);
            if (*compareCommand) return kesto::compareCommand(compare);
            if (*drawCommand) return kesto::drawCommand(draw);
            if (*reportCommand) return kesto::reportCommand(report);
            if (*schemaCommand) return kesto::schemaCommand();
            return kesto::typesCommand(types);
        }();
        return written(status);
    } catch (const CLI::ParseError& error) {
        std::ostringstream errors;
        const int status = app.exit(error, std::cout, errors) == 0 ? kesto::kGood : kesto::kBadModel;
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
