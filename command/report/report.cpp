#include "report.h"

#include <fmt/format.h>

#include <map>
#include <nlohmann/json.hpp>

#include "base64.h"
#include "markup.h"
#include "report_page.h"
#include "sha256.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

// JSON within a script element: no "<" that the browser could take for the end of the script or the start of a comment.
std::string insideScript(std::string text) {
    constexpr std::string_view kEscaped = "\\u003c";
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos; at += kEscaped.size()) {
        text.replace(at, 1, kEscaped);
    }
    return text;
}

// Each {{name}} of the page in one pass, so that nothing is looked for in what was filled in.
std::string filled(std::string_view page, const std::map<std::string_view, std::string>& parts) {
    std::string result;
    for (;;) {
        const std::size_t open = page.find("{{");
        result += page.substr(0, open);
        if (open == std::string_view::npos) return result;
        const std::size_t close = page.find("}}", open);
        result += parts.at(page.substr(open + 2, close - open - 2));
        page.remove_prefix(close + 2);
    }
}

// The browser runs this script and uses this style, and nothing else, whatever names a model has; it fetches nothing.
std::string policy() {
    const auto hash = [](std::string_view text) { return base64(sha256Of(text)); };
    return fmt::format(
        "default-src 'none'; script-src 'sha256-{}'; style-src 'sha256-{}'; img-src data: blob:; base-uri 'none'; "
        "form-action 'none'",
        hash(page::kScript), hash(page::kStyle));
}

}  // namespace

bool hasCharts() {
    return !page::kLicences.empty();
}

std::string filledPage(std::string_view title, const std::string& drawing, const Json& data) {
    return filled(page::kHtml, {{"title", escapeMarkup(title)},
                                {"policy", policy()},
                                {"drawing", drawing},
                                {"data", insideScript(data.dump(-1, ' ', false, Json::error_handler_t::replace))},
                                {"style", std::string(page::kStyle)},
                                {"script", std::string(page::kScript)},
                                {"licences", escapeMarkup(page::kLicences)}});
}

std::string reportPage(const PageSource& source, const std::string& drawing) {
    const Json data = pageData(source);
    return filledPage(data.value("title", "Results"), drawing, data);
}

}  // namespace kesto
