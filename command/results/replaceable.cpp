#include "replaceable.h"

#include <fmt/format.h>

#include <filesystem>

#include "files.h"
#include "platform.h"

namespace kesto {

void expectReplaceable(const std::string& folder, const std::vector<std::string>& names,
                       const std::vector<std::string>& inputs, const std::function<bool(const std::string&)>& isOurs,
                       std::string_view kind) {
    namespace fs = std::filesystem;
    for (const std::string& name : names) {
        const std::string path = joined(folder, name);
        if (fs::symlink_status(pathOf(path)).type() == fs::file_type::not_found) continue;
        for (const std::string& input : inputs) {
            std::error_code error;
            if (!fs::equivalent(pathOf(path), pathOf(input), error) || error) continue;
            throw NotReplaceable(
                "over-input",
                fmt::format("results would be written over {}, which the {} reads; choose another folder", path, kind));
        }
        if (isOurs(name)) {
            if (const std::error_code error = replaceAccess(path)) {
                throw std::runtime_error(fmt::format("cannot write {}: {}", path, reasonOf(error)));
            }
            continue;
        }
        throw NotReplaceable(
            "not-results", fmt::format("{} is no file that a {} has left here, and would be replaced; move it away, or "
                                       "choose another folder",
                                       path, kind));
    }
}

}  // namespace kesto
