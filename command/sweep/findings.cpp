#include "findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostKept = 1000;

// Codes outlive what names them.
std::string_view codeNamed(std::string_view name) {
    for (const ErrorCode& code : kErrorCodes) {
        if (code.name == name) return code.name;
    }
    for (const WarningCode& code : kWarningCodes) {
        if (code.name == name) return code.name;
    }
    return {};
}

Severity severityNamed(std::string_view name) {
    for (const Severity severity : {Severity::error, Severity::warning}) {
        if (toText(severity) == name) return severity;
    }
    return Severity::note;
}

std::string upToNumber(const std::string& text) {
    return text.substr(0, text.find_first_of("0123456789"));
}

}  // namespace

bool Findings::isInDesign(const Place& place) const {
    return place.file && (*place.file == designTable_ || place.file->starts_with("--vary "));
}

// An error is told for each cell; a warning says the same of members whose numbers differ.
std::string Findings::keyOf(const Diagnostic& one) const {
    const bool isError = one.severity == Severity::error;
    const std::string place = !isError && isInDesign(one.place) ? std::string() : toString(one.place);
    return fmt::format("{}|{}|{}|{}|{}", toText(one.severity), one.code, one.component, place,
                       isError ? one.text : upToNumber(one.text));
}

void Findings::add(const Finding& finding) {
    const std::string key = keyOf(finding.diagnostic);
    const auto known = findings_.find(key);
    if (known == findings_.end()) {
        if (findings_.size() < kMostKept) {
            findings_.emplace(key, finding);
        } else {
            untold_ += finding.members;
        }
        return;
    }
    Finding& other = known->second;
    other.members += finding.members;
    if (finding.first > other.first) return;
    other.first = finding.first;
    other.diagnostic = finding.diagnostic;
}

void Findings::add(std::size_t member, const Diagnostics& diagnostics) {
    std::map<std::string, const Diagnostic*> said;  // once of a member
    for (const Diagnostic& one : diagnostics.all()) {
        if (said.emplace(keyOf(one), &one).second) add(Finding{one, member, 1});
    }
}

Json Findings::rows() const {
    Json rows = Json::array();
    for (const auto& [key, finding] : findings_) {
        const Diagnostic& one = finding.diagnostic;
        rows.push_back({{"code", one.code},
                        {"severity", toText(one.severity)},
                        {"text", one.text},
                        {"file", one.place.file ? Json(*one.place.file) : Json(nullptr)},
                        {"line", one.place.line},
                        {"column", one.place.column},
                        {"component", one.component},
                        {"first_member", finding.first},
                        {"members", finding.members}});
    }
    if (untold_ > 0) rows.push_back({{"untold", untold_}});
    return rows;
}

void Findings::add(const Json& rows) {
    for (const Json& row : rows) {
        if (row.contains("untold")) {
            untold_ += row.at("untold").get<std::size_t>();
            continue;
        }
        Place place{nullptr, row.at("line"), row.at("column")};
        if (row.at("file").is_string()) place.file = std::make_shared<const std::string>(row.at("file"));
        const auto text = [&](const char* name) { return row.at(name).get<std::string>(); };
        add(Finding{{severityNamed(text("severity")), place, text("text"), codeNamed(text("code")), text("component")},
                    row.at("first_member"),
                    row.at("members")});
    }
}

void Findings::tell(std::size_t members, Diagnostics& diagnostics) const {
    for (const auto& [key, finding] : findings_) {
        Diagnostic one = finding.diagnostic;
        if (members > 1 && finding.members == members) {
            one.text += fmt::format("; in all {} members", members);
        } else if (finding.members > 1) {
            one.text += fmt::format("; in {} of {} members, the first {}", finding.members, members, finding.first);
        } else if (members > 1 && !isInDesign(one.place)) {
            one.text += fmt::format("; in member {}", finding.first);
        }
        diagnostics.append(std::move(one));
    }
    if (untold_ == 0) return;
    diagnostics.error("too-large", {}, fmt::format("… and {} more errors and warnings of members", untold_));
}

}  // namespace kesto
