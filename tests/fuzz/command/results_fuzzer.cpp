// Any text as summary.json and the CSV files beside it: a page, or an error in words.
//
// Each file begins with a line "=== NAME"; what stands before the first is summary.json.
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "files.h"
#include "report.h"
#include "scratch_folder.h"

namespace {

// With the few keys without which no page is made, so that what else may be wrong is reached.
std::string completed(const std::string& summary) {
    auto json = nlohmann::ordered_json::parse(summary, nullptr, false);
    if (!json.is_object()) return summary;
    json.update({{"start", "2012-01-01"}, {"end", "2012-01-02"}, {"steps_run", 2}, {"outcome", "finished"}});
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    static constexpr std::string_view kNames[] = {"flows.csv", "qualities.csv", "states.csv", "potentials.csv",
                                                  "overview.json"};
    for (const std::string_view name : kNames) {
        folder.remove(std::string(name));
    }
    std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string given(text.substr(0, text.find("\n=== ")));
    // Now and then as it is.
    const std::string summary = size % 8 == 0 ? given : completed(given);
    for (std::size_t at = text.find("\n=== "); at != std::string_view::npos; at = text.find("\n=== ")) {
        text.remove_prefix(at + 5);
        const std::string_view part = text.substr(0, text.find("\n=== "));
        for (const std::string_view name : kNames) {
            if (part.starts_with(name)) folder.write(std::string(name), part.substr(part.find('\n') + 1));
        }
    }
    try {
        // Whatever the summary lists: the checksums that it would need are not to be guessed.
        kesto::filesOf(summary);
        std::vector<kesto::WrittenFile> files;
        for (const std::string_view name : kNames) {
            const std::string file(name);
            if (std::filesystem::exists(kesto::joined(folder.path(), file))) files.push_back({file, 0, ""});
        }
        const std::string page =
            kesto::reportPage({.folder = folder.path(), .stored = {summary, files}, .changes = {}}, "");
        if (!page.ends_with("</html>\n")) __builtin_trap();
    } catch (const std::runtime_error& error) {
        if (!*error.what()) __builtin_trap();
    } catch (const nlohmann::json::exception&) {
        // The command says which file it is.
    }
    return 0;
}
