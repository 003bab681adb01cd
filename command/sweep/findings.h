// What is said of many members: each thing once, with how many of them it is said of.
#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "diagnostics.h"

namespace kesto {

class Findings {
  public:
    // Places in the table of the design differ from member to member.
    explicit Findings(std::string designTable = {}) : designTable_(std::move(designTable)) {}

    void add(std::size_t member, const Diagnostics& diagnostics);
    void add(const nlohmann::ordered_json& rows);  // of others, as rows() gave them

    nlohmann::ordered_json rows() const;

    // Puts them into the diagnostics of all `members`.
    void tell(std::size_t members, Diagnostics& diagnostics) const;

  private:
    struct Finding {
        Diagnostic diagnostic;  // of the first member
        std::size_t first = 0, members = 0;
    };
    void add(const Finding& finding);
    std::string keyOf(const Diagnostic& diagnostic) const;
    bool isInDesign(const Place& place) const;

    std::string designTable_;
    std::map<std::string, Finding> findings_;
    std::size_t untold_ = 0;  // errors beyond those that are kept
};

}  // namespace kesto
