#include <fmt/format.h>

#include <iostream>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "error_codes.h"
#include "warning_codes.h"

namespace kesto {

namespace {

struct Row {
    std::string_view code, severity, about, meaning;
};

std::vector<Row> allCodes() {
    static constexpr std::string_view kAbout[] = {"wiring", "values", "results", "note"};
    std::vector<Row> rows;
    for (const WarningCode& code : kWarningCodes) {
        const bool isNote = code.about == About::note;
        rows.push_back({code.name, isNote ? "note" : "warning",
                        isNote ? std::string_view() : kAbout[static_cast<std::size_t>(code.about)], code.meaning});
    }
    for (const ErrorCode& code : kErrorCodes) {
        rows.push_back({code.name, "error", "", code.meaning});
    }
    return rows;
}

}  // namespace

int codesCommand(const CodesOptions& options) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Row& row : allCodes()) {
        if (options.json) {
            list.push_back(
                {{"code", row.code}, {"severity", row.severity}, {"about", row.about}, {"meaning", row.meaning}});
        } else {
            std::cout << fmt::format("{:<24} {:<7}  {:<7}  {}\n", row.code, row.severity, row.about, row.meaning);
        }
    }
    if (options.json) std::cout << list.dump(2) << '\n';
    return kGood;
}

}  // namespace kesto
