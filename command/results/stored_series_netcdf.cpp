#include <fmt/format.h>

#include <stdexcept>

#include "catalogue.h"
#include "netcdf_reader.h"
#include "results_netcdf.h"
#include "series_tables.h"
#include "stored_series_files.h"

namespace kesto {

namespace {

class NetcdfSeries : public StoredSeries::Files {
  public:
    explicit NetcdfSeries(const std::string& path) : file_(path) {
        for (const int day : file_.integers("time")) {
            days_.push_back(day);
        }
        for (const SeriesTable& table : kSeriesTables) {
            const Quantity quantity = table.isOfFlows()                    ? Quantity::flow
                                      : table.state == SeriesKind::storage ? Quantity::storage
                                                                           : Quantity::storeQuality;
            addRows(std::string(table.variable), std::string(table.dimension), quantity);
            if (!table.quality.empty())
                addRows(std::string(table.quality), std::string(table.dimension), Quantity::quality);
        }
        addPotentials();
    }

    std::vector<Day> days() const override { return days_; }
    std::vector<SeriesEntry> entries() const override { return entries_; }

    std::vector<std::vector<float>> valuesOf(const std::vector<std::size_t>& wanted) const override {
        std::vector<std::vector<float>> values;
        for (const std::size_t index : wanted) {
            const Row& row = rows_[index];
            values.push_back(file_.row(row.variable, row.number));
            if (values.back().empty() || values.back().size() == days_.size()) continue;
            throw std::runtime_error(fmt::format("results.nc is broken: {} has {} values for {} days", row.variable,
                                                 values.back().size(), days_.size()));
        }
        return values;
    }

  private:
    struct Row {
        std::string variable;
        std::size_t number;
    };

    void addRows(const std::string& variable, const std::string& dimension, Quantity quantity) {
        if (!file_.has(variable)) return;
        std::string unit = file_.textAttribute(variable, "units");
        if (unit == "1") unit.clear();
        const std::vector<std::string> names = file_.texts(dimension + "_name");
        for (std::size_t i = 0; i < names.size(); ++i) {
            entries_.push_back({quantity, names[i], unit});
            rows_.push_back({variable, i});
        }
    }

    void addPotentials() {
        if (!file_.has("group_name")) return;
        const std::vector<std::string> groups = file_.texts("group_name");
        for (std::size_t group = 0; group < groups.size(); ++group) {
            for (std::size_t i = 0; i < kPotentials; ++i) {
                const PotentialInfo& potential = info(static_cast<Potential>(i));
                for (const std::string_view unit : {potential.unit, std::string_view("mm")}) {
                    const std::string variable = potentialVariable(potential, unit);
                    if (!file_.has(variable)) continue;
                    entries_.push_back(
                        {Quantity::potential, fmt::format("{}:{}", groups[group], potential.name), std::string(unit)});
                    rows_.push_back({variable, group});
                }
            }
        }
    }

    NetcdfReader file_;
    std::vector<Day> days_;
    std::vector<SeriesEntry> entries_;
    std::vector<Row> rows_;  // of each entry
};

}  // namespace

std::unique_ptr<StoredSeries::Files> openNetcdfSeries(const std::string& path) {
    return std::make_unique<NetcdfSeries>(path);
}

}  // namespace kesto
