#include "results_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "catalogue.h"
#include "csv_file.h"
#include "files.h"
#include "netcdf_reader.h"
#include "results_netcdf.h"

namespace kesto {

namespace {

// "tank:overflow [L]" apart.
std::pair<std::string, std::string> nameAndUnit(const std::string& header) {
    const std::size_t bracket = header.rfind(" [");
    if (bracket == std::string::npos || header.back() != ']') return {header, ""};
    return {header.substr(0, bracket), header.substr(bracket + 2, header.size() - bracket - 3)};
}

class CsvFolder {
  public:
    CsvFolder(const std::string& folder, const std::vector<WrittenFile>& listed, ReadResults& results)
        : folder_(folder), listed_(listed), results_(results) {}

    void read() {
        take(
            "flows.csv", [&](const std::string&) { return &results_.flows; }, "");
        readStates();
        take(
            "qualities.csv", [&](const std::string&) { return &results_.qualities; }, "");
        take(
            "potentials.csv", [&](const std::string&) { return &results_.potentials; }, "");
    }

    void readStates() {
        take(
            "states.csv",
            [&](const std::string& name) { return name.ends_with(":storage") ? &results_.storages : nullptr; },
            ":storage");
        take(
            "states.csv",
            [&](const std::string& name) { return name.ends_with(":quality") ? &results_.storeQualities : nullptr; },
            ":quality");
    }

  private:
    template <class Where>
    void take(const char* file, const Where& where, std::string_view ending) {
        const CsvFile* csv = open(file);
        for (std::size_t column = 1; csv && column < csv->columns().size(); ++column) {
            auto [name, unit] = nameAndUnit(csv->columns()[column]);
            std::vector<NamedSeries>* list = where(name);
            if (!list) continue;
            name.resize(name.size() - ending.size());
            if (unit == "quality") unit.clear();  // it has none of its own
            list->push_back({name, unit, valuesOf(*csv, column)});
        }
    }

    // Each file is read once, and its days must be those of the others.
    const CsvFile* open(const std::string& file) {
        const auto known = files_.find(file);
        if (known != files_.end()) return known->second ? &*known->second : nullptr;
        std::optional<CsvFile>& csv = files_[file];
        const std::string path = joined(folder_, file);
        if (!find(listed_, file)) return nullptr;
        Diagnostics diagnostics;
        csv = CsvFile::read(path, {std::make_shared<const std::string>(folder_), 0, 0}, diagnostics);
        if (!csv || diagnostics.hasErrors()) {
            std::ostringstream text;
            diagnostics.print(text);
            throw std::runtime_error(text.str());
        }
        const std::vector<Day> days = daysOf(*csv);
        const bool isFirst =
            std::count_if(files_.begin(), files_.end(), [](const auto& one) { return one.second; }) == 1;
        if (isFirst) results_.days = days;
        if (days != results_.days) {
            throw std::runtime_error(
                fmt::format("{}: {} has other dates than the files before it; they are of two runs", folder_, file));
        }
        return &*csv;
    }

    static std::vector<float> valuesOf(const CsvFile& csv, std::size_t column) {
        std::vector<float> values;
        values.reserve(csv.rows());
        for (std::size_t row = 0; row < csv.rows(); ++row) {
            values.push_back(parseFloat(csv.cell(row, column)).value_or(std::numeric_limits<float>::quiet_NaN()));
        }
        return values;
    }

    static std::vector<Day> daysOf(const CsvFile& csv) {
        std::vector<Day> days;
        for (std::size_t row = 0; row < csv.rows(); ++row) {
            const std::optional<Day> day = parseDay(csv.cell(row, 0));
            if (!day) {
                throw std::runtime_error(fmt::format("{}: expected a date as in 2012-01-31, found \"{}\"",
                                                     toString(csv.placeOf(row, 0)), csv.cell(row, 0)));
            }
            days.push_back(*day);
        }
        return days;
    }

    std::string folder_;
    const std::vector<WrittenFile>& listed_;
    ReadResults& results_;
    std::map<std::string, std::optional<CsvFile>> files_;
};

// A row as it stands in the file; empty where none was written.
std::vector<float> rowOf(const NetcdfReader& file, const std::string& variable, std::size_t row, std::size_t days) {
    std::vector<float> values = file.row(variable, row);
    if (values.empty() || values.size() == days) return values;
    throw std::runtime_error(
        fmt::format("results.nc is broken: {} has {} values for {} days", variable, values.size(), days));
}

void takeRows(const NetcdfReader& file, const std::string& variable, const std::string& dimension, std::size_t days,
              std::vector<NamedSeries>& list) {
    if (!file.has(variable)) return;
    std::string unit = file.textAttribute(variable, "units");
    if (unit == "1") unit.clear();
    const std::vector<std::string> names = file.texts(dimension + "_name");
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::vector<float> values = rowOf(file, variable, i, days);
        if (!values.empty()) list.push_back({names[i], unit, std::move(values)});
    }
}

void readDays(const NetcdfReader& file, ReadResults& results) {
    for (const int day : file.integers("time")) {
        results.days.push_back(day);
    }
}

void readStates(const NetcdfReader& file, ReadResults& results) {
    const std::size_t days = results.days.size();
    takeRows(file, "storage", "store", days, results.storages);
    takeRows(file, "storage_depth", "depth_store", days, results.storages);
    takeRows(file, "stored_quality", "quality_store", days, results.storeQualities);
}

void readAll(const NetcdfReader& file, ReadResults& results) {
    const std::size_t days = results.days.size();
    takeRows(file, "quantity", "flow", days, results.flows);
    takeRows(file, "depth", "depth_flow", days, results.flows);
    takeRows(file, "quality", "flow", days, results.qualities);
    takeRows(file, "depth_quality", "depth_flow", days, results.qualities);
    readStates(file, results);
    if (!file.has("group_name")) return;
    const std::vector<std::string> groups = file.texts("group_name");
    for (std::size_t group = 0; group < groups.size(); ++group) {
        for (std::size_t i = 0; i < kPotentials; ++i) {
            const PotentialInfo& potential = info(static_cast<Potential>(i));
            for (const std::string_view unit : {potential.unit, std::string_view("mm")}) {
                const std::string variable = potentialVariable(potential, unit);
                if (!file.has(variable)) continue;
                std::vector<float> values = rowOf(file, variable, group, days);
                if (values.empty()) continue;
                results.potentials.push_back(
                    {fmt::format("{}:{}", groups[group], potential.name), std::string(unit), std::move(values)});
            }
        }
    }
}

// Both kinds of file in the same order.
void sortByUnit(ReadResults& results) {
    const auto byUnit = [](const NamedSeries& a, const NamedSeries& b) { return a.unit < b.unit; };
    std::stable_sort(results.flows.begin(), results.flows.end(), byUnit);
    std::stable_sort(results.storages.begin(), results.storages.end(), byUnit);
    std::map<std::string, std::size_t> order;
    for (const NamedSeries& flow : results.flows) {
        order.emplace(flow.name, order.size());
    }
    // A stranger's qualities may be of no flow: they come last.
    const auto rankOf = [&](const NamedSeries& quality) {
        const auto flow = order.find(quality.name);
        return flow == order.end() ? order.size() : flow->second;
    };
    std::stable_sort(results.qualities.begin(), results.qualities.end(),
                     [&](const NamedSeries& a, const NamedSeries& b) { return rankOf(a) < rankOf(b); });
}

}  // namespace

ReadResults readResults(const std::string& folder, const std::vector<WrittenFile>& files) {
    ReadResults results;
    if (find(files, "results.nc")) {
        const NetcdfReader file(joined(folder, "results.nc"));
        readDays(file, results);
        readAll(file, results);
    } else {
        CsvFolder(folder, files, results).read();
    }
    sortByUnit(results);
    return results;
}

ReadResults readStates(const std::string& folder, const std::vector<WrittenFile>& files) {
    ReadResults results;
    if (find(files, "results.nc")) {
        const NetcdfReader file(joined(folder, "results.nc"));
        readDays(file, results);
        readStates(file, results);
    } else {
        CsvFolder(folder, files, results).readStates();
    }
    return results;
}

const WrittenFile* statesFile(const std::vector<WrittenFile>& files) {
    const WrittenFile* netcdf = find(files, "results.nc");
    return netcdf ? netcdf : find(files, "states.csv");
}

}  // namespace kesto
