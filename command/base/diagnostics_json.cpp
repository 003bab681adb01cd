#include "diagnostics_json.h"

#include <nlohmann/json.hpp>

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

Json rowOf(const Diagnostics& diagnostics, const Diagnostic& diagnostic) {
    const Place& place = diagnostic.place;
    Json row{{"code", diagnostic.code}, {"severity", toText(diagnostic.severity)},
             {"text", diagnostic.text}, {"file", nullptr},
             {"line", nullptr},         {"column", nullptr},
             {"component", nullptr},    {"accepted", diagnostics.isAccepted(diagnostic)}};
    if (place.file) row["file"] = *place.file;
    if (place.line > 0) row["line"] = place.line;
    if (place.line > 0 && place.column > 0) row["column"] = place.column;
    if (!diagnostic.component.empty()) row["component"] = diagnostic.component;
    return row;
}

Json rowsOf(const Diagnostics& diagnostics, bool errors) {
    Json rows = Json::array();
    for (const Diagnostic* diagnostic : diagnostics.inOrder()) {
        if ((diagnostic->severity == Severity::error) == errors) rows.push_back(rowOf(diagnostics, *diagnostic));
    }
    return rows;
}

}  // namespace

Json errorRows(const Diagnostics& diagnostics) {
    return rowsOf(diagnostics, true);
}

Json warningRows(const Diagnostics& diagnostics) {
    return rowsOf(diagnostics, false);
}

}  // namespace kesto
