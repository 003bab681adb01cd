// The commands of kesto; command_line.h says which arguments they have.
#pragma once

#include <string>

#include "read_options.h"

namespace kesto {

// Exit statuses of all commands.
inline constexpr int kGood = 0;
inline constexpr int kRunFailed = 1;
inline constexpr int kBadModel = 2;  // or wrong usage

struct RunOptions {
    std::string model;
    std::string output;  // folder; empty: only the summary
    ReadOptions read;
    std::string record = "all";  // or none, or a list of outputs
    bool quiet = false;          // errors only
    bool json = false;           // the summary as JSON
    bool full = false;           // a summary of all, instead of what fits a screen
    std::string format = "csv";  // of the results, or netcdf
    int compression = 1;         // of NetCDF, 0 to 9: more takes much time for little space
    bool balance = false;        // of the water
    bool strict = false;         // warnings that are not accepted are a failure
};

struct CheckOptions {
    std::string model;
    ReadOptions read;
    bool strict = false;
    bool json = false;
};

struct TypesOptions {
    std::string type;  // empty: list them all
    bool json = false;
};

struct FiguresOptions {
    bool json = false;
};

struct CodesOptions {
    bool json = false;
};

struct NewOptions {
    std::string folder;
};

struct DrawOptions {
    ReadOptions read;
    std::string model;
    std::string output;  // its ending says the format
    bool all = false;    // each component, however many there are
};

struct CompareOptions {
    ReadOptions read;
    std::vector<std::string> runs;  // folders with results of runs or sweeps; with `scenarios` one model
    std::string members;            // of sweeps, as in "1,5,9-12"; empty: the first ones
    bool scenarios = false;
    bool all = false;
    bool json = false;
    std::string output;  // CSV; empty: none
};

struct SweepOptions {
    std::string model;
    std::string table;              // of members; empty: none
    std::vector<std::string> vary;  // as in tank.size=500:8000:16
    bool scenarios = false;         // of the model
    std::string output;             // folder
    ReadOptions read;
    std::string record = "none";    // or a list of outputs, or all
    std::string format;             // of that: netcdf or csv; empty: netcdf, where this command has it
    std::string every = "day";      // or month, or year: of what is recorded
    std::string figures = "key";    // or all: of components, too
    std::string members;            // as in 1-500; empty: all
    std::size_t jobs = 0;           // processes at a time; 0: as many as there are cores
    bool restart = false;           // what an earlier sweep has left is removed
    std::vector<std::string> join;  // folders of slices, in place of a model
    bool quiet = false;
    bool json = false;
};

struct ReportOptions {
    std::string results;                   // folder that a run wrote
    std::string output;                    // page
    std::string model;                     // empty: where the run found it
    std::vector<std::string> series = {};  // to show by day; empty: those that matter
};

int runCommand(const RunOptions& options);
int checkCommand(const CheckOptions& options);
int typesCommand(const TypesOptions& options);
int codesCommand(const CodesOptions& options);
int figuresCommand(const FiguresOptions& options);
int newCommand(const NewOptions& options);
int schemaCommand();
int compareCommand(const CompareOptions& options);
int sweepCommand(const SweepOptions& options);
int drawCommand(const DrawOptions& options);
int reportCommand(const ReportOptions& options);

}  // namespace kesto
