// The figures of several runs side by side.
#pragma once

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "evaluation.h"
#include "results.h"

namespace kesto {

// A series by day.
struct ComparedSeries {
    std::string name, unit;
    bool isSum;  // over time; else an amount that is there
    std::vector<float> values;
};

inline constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

// What a run or a sweep was made of, by which it can be made again.
struct MadeOf {
    std::string version;                                       // empty: that of this command
    std::vector<std::pair<std::string, std::string>> inputs;   // file and checksum: the model first; empty: not known
    std::vector<std::pair<std::string, std::string>> options;  // "--set", "tank.size=3"
};

// What a run says of itself.
struct ComparedRun {
    std::string name;  // the folder of its results, a scenario, or a member of a sweep
    std::string title, model, modelSha256;
    std::string start, end;  // empty: not known
    std::string outcome;
    std::vector<std::pair<std::string, double>> figures;  // not a number: without a value
    std::vector<std::string> units;                       // of the figures
    std::vector<std::string> set = {};                    // what it was read with in place of the model's values

    // For the page.
    std::string folder = {};                // of its results; empty: in none
    std::string overview = {};              // JSON; empty: none
    std::vector<ComparedSeries> days = {};  // those that the overview shows, of a run without a folder
    MadeOf made = {};
};

ComparedRun comparedRun(const std::string& name, const Results& results, const Evaluation& evaluation);

// From summary.json in a folder of results. Throws std::runtime_error that names the file and what is wrong with it.
ComparedRun readComparedRun(const std::string& folder);

struct ComparedFigure {
    std::string name, unit;
    std::vector<double> values;  // of each run; not a number: it has none
    bool differs() const;
};

// What members of a sweep were given, and what came of it.
struct ComparedSweep {
    struct Key {
        std::string name, unit;          // of the numbers
        std::vector<std::string> texts;  // by member, as they were given; empty: the model's value
        std::vector<double> numbers;     // the same in one unit; empty: they are no quantities
    };
    struct Failure {
        std::size_t member;
        std::string outcome, message;
    };
    std::string title;
    std::vector<Key> keys;
    std::vector<ComparedFigure> figures;          // those that vary; values by member
    std::vector<std::size_t> members;             // their numbers
    std::vector<std::string> ends;                // how each of them ended
    std::size_t all = 0;                          // members of the sweep
    std::map<std::string, std::size_t> outcomes;  // of all: how many ended so
    std::vector<Failure> failures;                // the first of those that did not finish
    MadeOf made;
    std::string designTable, designSha256;  // without a table: empty
};

struct Comparison {
    std::vector<ComparedRun> runs;
    std::vector<ComparedFigure> figures;  // in the order in which runs have them, and without those that are all alike
    std::size_t alike = 0;                // how many these are
    std::vector<ComparedFigure> savings;  // of the others against the first run, which has none
    std::vector<std::string> warnings;    // what makes the runs hard to compare
};

Comparison compare(std::vector<ComparedRun> runs, bool withAlike);

// "EUR"; empty: it has no figure of money.
std::string currencyOf(const ComparedRun& run);

// What runs of the same length save against the first one: mains water, energy and, in its currency, money, so far as
// they are known.
std::vector<ComparedFigure> savingsOf(const std::vector<ComparedRun>& runs);

// For people, in units that suit the size; for programs, in the units of the figures.
std::string toText(const Comparison& comparison);
std::string toJson(const Comparison& comparison);
std::string toCsv(const Comparison& comparison);

}  // namespace kesto
