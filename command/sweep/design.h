// What the members of a sweep have in place of the model's values: a table with a row for each, lists and ranges that
// are crossed, the model's scenarios, or several of these crossed with one another.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "csv_file.h"
#include "diagnostics.h"
#include "model_document.h"
#include "overrides.h"

namespace kesto {

struct DesignOptions {
    std::string table;              // CSV: a column for each key, a row for each member
    std::vector<std::string> vary;  // as in tank.size=500:8000:16
    bool scenarios = false;         // the model, then each of its scenarios
};

// Members are counted from 1.
class Design {
  public:
    // None where it cannot be understood, which is reported.
    static std::optional<Design> read(const DesignOptions& options, const ModelDocument& document,
                                      Diagnostics& diagnostics);

    std::size_t members() const { return members_; }
    const std::vector<std::string>& keys() const { return keys_; }
    const std::vector<KeyPath>& paths() const { return paths_; }  // of the keys; empty: the scenario

    // As it was written under each key; empty: the model's own value.
    std::vector<std::string> cellsOf(std::size_t member) const;

    // Of the scenarios; empty: none.
    std::string scenarioOf(std::size_t member) const;
    std::vector<std::string> scenarios() const;  // those that members have

    // For each member from `first` to `last`, the first of them that has the same at all paths but `hidden`.
    std::vector<std::size_t> firstAlike(const std::set<KeyPath>& hidden, std::size_t first, std::size_t last) const;

    std::vector<Override> overridesOf(std::size_t member, Diagnostics& diagnostics) const;

    // The table's, to tell places in it from others.
    const std::string& tablePath() const { return tablePath_; }

    // Whether members may differ in their period, or in what their components are.
    bool changesShape() const;

    // Checksum of the members and what they have.
    std::string sha256() const;

  private:
    // What varies together: the rows of the table, the values of one key, or the scenarios.
    struct Factor {
        std::vector<std::size_t> keys;  // indices into keys_
        std::optional<CsvFile> table;   // none: one key, with the texts
        std::vector<std::string> levels;
        bool isScenarios = false;
        std::size_t size() const { return table ? table->rows() : levels.size(); }
        std::string_view cell(std::size_t level, std::size_t key) const {
            return table ? table->cell(level, key) : std::string_view(levels[level]);
        }
    };

    void addScenarios(const ModelDocument& document, Diagnostics& diagnostics);
    void addTable(const std::string& path, Diagnostics& diagnostics);
    void addVaried(const std::string& text, Diagnostics& diagnostics);
    std::size_t addKey(const std::string& key, const Place& place, Diagnostics& diagnostics);
    void count(Diagnostics& diagnostics);
    std::size_t levelOf(std::size_t factor, std::size_t member) const;
    std::vector<std::size_t> firstLevels(const Factor& factor, const std::set<KeyPath>& hidden) const;
    void refuseLost(const std::vector<Override>& overrides, Diagnostics& diagnostics) const;
    Override overrideAt(const Factor& factor, std::size_t level, std::size_t key) const;

    std::vector<std::string> keys_;
    std::vector<KeyPath> paths_;
    bool mayLose_ = false;  // one key may replace what another gives
    std::vector<Place> places_;
    std::vector<Factor> factors_;  // the last one varies fastest
    std::size_t members_ = 0;
    std::string tablePath_;
};

}  // namespace kesto
