// A model's file and the tables that it names under [tables], parsed: models are read from it as often as values are
// given in place of its own.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "csv_file.h"
#include "diagnostics.h"
#include "value.h"

namespace kesto {

struct ModelDocument {
    std::string path;
    Value file;
    std::map<std::string, std::vector<Value>, std::less<>> rows;  // of [tables], by what they hold
    std::vector<std::string> tableFiles;
    bool isWhole = true;  // false: rows are missing that could not be understood

    const std::vector<Value>& rowsOf(std::string_view key) const;
};

// None when the file cannot be read, which is reported. Faults of its tables are reported, too.
std::optional<ModelDocument> readDocument(const std::string& path, Diagnostics& diagnostics);

// Notes the first number whose thousands are parted, so that it is seen how all of them are read.
void noteThousands(const CsvFile& csv, Diagnostics& diagnostics);

}  // namespace kesto
