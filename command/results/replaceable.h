// Which files in a folder of results may be replaced: those that an earlier command of the kind has left there.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "error_codes.h"

namespace kesto {

// Results would take the place of a file that is not the command's to replace.
class NotReplaceable : public std::runtime_error {
  public:
    NotReplaceable(ErrorName code, const std::string& text) : std::runtime_error(text), name(code) {}
    ErrorName name;
};

// Throws NotReplaceable where a file of one of the names stands in the folder that is one of the `inputs`, or is not
// ours, or std::runtime_error where another program keeps hold of it. `kind` names what writes there, as in "a run".
void expectReplaceable(const std::string& folder, const std::vector<std::string>& names,
                       const std::vector<std::string>& inputs, const std::function<bool(const std::string&)>& isOurs,
                       std::string_view kind);

}  // namespace kesto
