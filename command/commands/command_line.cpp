#include "command_line.h"

namespace kesto {

namespace {

void addReadOptions(CLI::App& command, ReadOptions& options) {
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

CLI::App* addRun(CLI::App& app, RunOptions& options) {
    CLI::App* command = app.add_subcommand("run", "Run a model, print a summary and write the results");
    command->add_option("model", options.model, "Model file (TOML)")->required();
    command->add_option("-o,--output", options.output, "Folder for the results");
    command->add_option("--format", options.format, "Format of the results: csv (default) or netcdf")
        ->check(CLI::IsMember({"csv", "netcdf"}));
    command->add_option("--compress", options.compression, "Compression of NetCDF, 0 (none, fastest) to 9; default 1")
        ->check(CLI::Range(0, 9));
    command->add_flag("--balance", options.balance,
                      "Balance the water of each component, each group and the network; record what that needs");
    command->add_flag("--strict", options.strict,
                      "Exit with 1 on any warning that is not accepted, and balance the water");
    command->add_option("--record", options.record,
                        "Outputs to record: all (default), none, or a list such as "
                        "tank:overflow,roof");
    CLI::Option* statesFrom =
        command->add_option("--states-from", options.read.statesFrom,
                            "Folder with results; the run goes on from the states of the day before it begins");
    command
        ->add_flag("--approximate", options.read.approximate,
                   "Go on although the states do not hold all that components remember")
        ->needs(statesFrom);
    command->add_flag("-q,--quiet", options.quiet, "Print errors only");
    command->add_flag("--json", options.json, "Print the summary as JSON");
    command->add_flag("--full", options.full, "Print all flows, figures and potentials, not only what fits a screen");
    addReadOptions(*command, options.read);
    return command;
}

CLI::App* addCheck(CLI::App& app, CheckOptions& options) {
    CLI::App* command = app.add_subcommand("check", "Report all errors and warnings of a model, and its size");
    command->add_option("model", options.model, "Model file (TOML)")->required();
    command->add_flag("--strict", options.strict, "Exit with 1 on any warning that is not accepted");
    command->add_flag("--json", options.json, "Print all errors and warnings as JSON");
    addReadOptions(*command, options.read);
    return command;
}

CLI::App* addTypes(CLI::App& app, TypesOptions& options) {
    CLI::App* command = app.add_subcommand("types", "List the types of components, or describe one");
    command->add_option("type", options.type, "Name or tag of a type");
    command->add_flag("--json", options.json, "Print the whole catalogue as JSON");
    return command;
}

CLI::App* addCodes(CLI::App& app, CodesOptions& options) {
    CLI::App* command = app.add_subcommand("codes", "List the codes of warnings, notes and errors");
    command->add_flag("--json", options.json, "Print them as JSON");
    return command;
}

CLI::App* addFigures(CLI::App& app, FiguresOptions& options) {
    CLI::App* command = app.add_subcommand("figures", "List the figures that a run derives");
    command->add_flag("--json", options.json, "Print them as JSON");
    return command;
}

CLI::App* addNew(CLI::App& app, NewOptions& options) {
    CLI::App* command =
        app.add_subcommand("new", "Write a small commented model to start from, and its schema for editors");
    command->add_option("folder", options.folder, "Folder; created if it does not exist")->required();
    return command;
}

CLI::App* addDraw(CLI::App& app, DrawOptions& options) {
    CLI::App* command = app.add_subcommand("draw", "Draw the network of a model (needs Graphviz)");
    command->add_option("model", options.model, "Model file (TOML)")->required();
    command->add_option("-o,--output", options.output, "Picture: NAME.svg, .png, .pdf or, as text, .dot")->required();
    command->add_flag("--all", options.all, "Draw each component, even in a network of more than 300");
    addReadOptions(*command, options.read);
    return command;
}

CLI::App* addSweep(CLI::App& app, SweepOptions& options) {
    CLI::App* command = app.add_subcommand("sweep", "Run a model many times, with other values each time");
    command->add_option("model", options.model, "Model file (TOML)");
    command->add_option("members_csv", options.table,
                        "Table (CSV): a column for each key, a row for each run, the members");
    command->add_option("-o,--output", options.output, "Folder for the results")->required();
    command
        ->add_option("--vary", options.vary,
                     "Values of a key, as in --vary \"tank.size=1 m3,2 m3\" or tank.size=500:8000:16 "
                     "(from, to, how many); several are crossed")
        ->allow_extra_args(false);
    command->add_flag("--scenarios", options.scenarios, "Run the model and each of its scenarios");
    command->add_option("--record", options.record,
                        "Outputs to record: none (default), all, or a list such as tank:overflow,roof");
    command
        ->add_option("--format", options.format,
                     "Format of what is recorded: netcdf (default) or csv (default on Windows)")
        ->check(CLI::IsMember({"csv", "netcdf"}));
    command->add_option("--every", options.every, "What is recorded: each day (default), month or year")
        ->check(CLI::IsMember({"day", "month", "year"}));
    command->add_option("--figures", options.figures, "Figures: key (default), or all, of each component")
        ->check(CLI::IsMember({"key", "all"}));
    command->add_option("--jobs", options.jobs, "Members that run at a time; default: one per core")
        ->check(CLI::Range(1, 4096));
    command->add_option("--members", options.members, "Run a slice of the members, as in --members 1-500");
    command->add_flag("--restart", options.restart, "Begin anew where the folder already holds a sweep");
    command->add_option("--join", options.join, "Join the folders of slices into one, in place of running a model");
    command->add_flag("-q,--quiet", options.quiet, "Print errors only");
    command->add_flag("--json", options.json, "Print the summary as JSON");
    addReadOptions(*command, options.read);
    return command;
}

CLI::App* addCompare(CLI::App& app, CompareOptions& options) {
    CLI::App* command = app.add_subcommand("compare", "Compare the figures of several runs, or of members of a sweep");
    command->add_option("runs", options.runs, "Folders with results of runs or sweeps, or a model and --scenarios")
        ->required();
    command->add_flag("--scenarios", options.scenarios, "Run the model and each of its scenarios");
    command->add_option("--members", options.members, "Members of sweeps, as in 1,5,9-12; default: the first six");
    command->add_flag("--all", options.all, "Show figures that are the same in all runs, too");
    command->add_option("-o,--output", options.output,
                        "File to write: NAME.html, a page with charts, or a table (CSV)");
    command->add_flag("--json", options.json, "Print the comparison as JSON");
    addReadOptions(*command, options.read);
    return command;
}

CLI::App* addReport(CLI::App& app, ReportOptions& options) {
    CLI::App* command = app.add_subcommand("report", "Make one page with charts of the results of a run");
    command->add_option("results", options.results, "Folder with the results")->required();
    command->add_option("-o,--output", options.output, "Page to write (HTML)")->required();
    command->add_option("--model", options.model, "Model file, if it has moved since the run");
    command
        ->add_option("--series", options.series,
                     "Series to show by day: all, or a list such as tank:overflow,roof; default: the 50 that matter")
        ->delimiter(',')
        ->allow_extra_args(false);
    return command;
}

}  // namespace

std::vector<Subcommand> addSubcommands(CLI::App& app, CommandLine& line) {
    const auto of = [](const auto& command, const auto& options) {
        return [&command, &options] { return command(options); };
    };
    return {
        {addRun(app, line.run), of(runCommand, line.run)},
        {addCheck(app, line.check), of(checkCommand, line.check)},
        {addTypes(app, line.types), of(typesCommand, line.types)},
        {addCodes(app, line.codes), of(codesCommand, line.codes)},
        {addFigures(app, line.figures), of(figuresCommand, line.figures)},
        {addNew(app, line.create), of(newCommand, line.create)},
        {addDraw(app, line.draw), of(drawCommand, line.draw)},
        {addSweep(app, line.sweep), of(sweepCommand, line.sweep)},
        {addCompare(app, line.compare), of(compareCommand, line.compare)},
        {addReport(app, line.report), of(reportCommand, line.report)},
        {app.add_subcommand("schema", "Print the JSON Schema of model files, for editors"), schemaCommand},
    };
}

}  // namespace kesto
