// The folders of slices made into that of the whole sweep, bit for bit as if it had run at once.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace kesto {

// Returns members.json of the whole. Throws NotReplaceable, FolderBusy, or std::runtime_error when the slices do not
// make a whole, or nothing can be written.
nlohmann::ordered_json joinSlices(const std::vector<std::string>& folders, const std::string& output, bool restart);

}  // namespace kesto
