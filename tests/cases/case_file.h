// Reads the case files; README.md in this folder describes the format.
#ifndef KESTO_TESTS_CASE_FILE_H
#define KESTO_TESTS_CASE_FILE_H

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "model.h"

// One line of the file, taken apart: words, "quoted texts" and {formulas}.
struct Line {
    int number;
    std::vector<std::string> words;
    std::string rest;  // all but the first word
};

struct Case {
    std::string name;
    int line = 0;
    Model model;
    std::map<std::string, float> names;
    std::vector<Line> script;  // from the first operation on
    bool skipped = false;      // not for this system
};

struct CaseFile {
    std::string path;
    std::vector<Case> cases;
};

// Throws std::runtime_error with file and line when something in it cannot be read, or when a case expects nothing.
CaseFile readCaseFile(const std::string& path);

// The same for a file that is open; the path is for messages.
CaseFile readCases(std::istream& text, const std::string& path);

// Values as the files write them: 1.5 -0 nan {formula} and 0*5 for five zeros.
float readNumber(const std::string& word, const std::map<std::string, float>& names);
std::vector<float> readNumbers(const std::vector<std::string>& words, std::size_t from,
                               const std::map<std::string, float>& names);
std::int32_t readInteger(const std::string& word);
std::optional<Table> tableNamed(const std::string& name);

// Splits "0*5" and "3/1*2" into what is repeated and how often.
std::pair<std::string, int> repeated(const std::string& word);

#endif
