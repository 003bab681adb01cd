// The parts of the model reader; model_reader.cpp calls them in order.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "diagnostics.h"
#include "model.h"
#include "overrides.h"
#include "section.h"

namespace kesto {

struct Reading {
    Model& model;
    Diagnostics& diagnostics;
    int defaultTable = -1;                                        // of sources that name a column but no file
    std::vector<std::pair<SeriesKind, SourceIndex>> forAll = {};  // series that do not say whom they are for

    bool groupsDeclared = false;                           // a [groups] table: then it names them all
    std::set<std::string, std::less<>> unknownTypes = {};  // components that could not be kept

    std::vector<Override> overrides = {};

    int addTable(const PlacedText& file, const std::string& timeColumn);
};

// A file that the model names: relative to the folder of the model file.
std::string pathBeside(const std::string& modelPath, const std::string& file);

// What stands under one key of the file, or in one row of a table. Values are tables, from TOML or from a row of CSV.
bool addBrand(Reading& reading, const PlacedText& name);  // false when there is one of this name, which is reported
void readGroup(Reading& reading, const PlacedText& name, const Value& table);
void readComponent(Reading& reading, const Value& table);
void readSplits(Reading& reading, const Value& table);    // of a component, once all components are known
void readSplitRow(Reading& reading, const Value& table);  // of a table: splitter, beta, members
int addGroup(Reading& reading, const PlacedText& name);
void readConnection(Reading& reading, const Value& table);

// Of each brand the types of the components that use it; then what stands under its name, since units depend on types.
using BrandTypes = std::vector<std::vector<const Type*>>;
BrandTypes typesOfBrands(const Model& model);
void readBrand(Reading& reading, const PlacedText& name, const Value& table, const BrandTypes& types);

// [economics]: first the prices, then, once components and brands are known, what names them. Capital is given by keys
// of brands and components, sizes in the unit that their type has.
void readEconomics(Reading& reading, const Value& table);
void finishEconomics(Reading& reading, const Value& table);
Capital readCapital(Section& section, std::string_view sizeUnit, const std::string& currency);
bool isKeyOfCapital(std::string_view key);

std::optional<int> wholeNumber(std::string_view text);  // "12"

// A source of values: a number, the name of a column, or a table; kBadSource when it is none of these.
SourceIndex readSource(Reading& reading, const Value& value, std::string_view unit, const std::string& what,
                       std::vector<std::string_view> otherKeys = {});

// [series]: first the files, then, once groups and components are known, what is filed under whom.
void readSeriesFile(Reading& reading, const Value& table);
void readSeries(Reading& reading, const Value& table);
void finishSeries(Reading& reading);

// Top level: accept. `options` are those of the command line, written likewise.
void readAccepted(Reading& reading, const Value* list, const std::vector<std::string>& options);

}  // namespace kesto
