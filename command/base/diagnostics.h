// What is wrong with a model: collected, so that a person is told everything at once.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "place.h"
#include "warning_codes.h"

namespace kesto {

enum class Severity { error, warning };

struct Diagnostic {
    Severity severity;
    Place place;
    std::string text;
    std::string_view code = {};  // of a warning
    std::string component = {};  // name of the one it is about; empty: of none, or of several
};

class Diagnostics {
  public:
    void error(const Place& place, std::string text);
    void warning(const WarningCode& code, const Place& place, std::string text, std::string component = {});

    bool hasErrors() const;
    std::size_t count(Severity severity) const;
    const std::vector<Diagnostic>& all() const { return all_; }

    // In order of file and line; each as "file:line:column: error: text".
    void print(std::ostream& out, bool warnings = true) const;

  private:
    std::vector<Diagnostic> all_;
};

// `; did you mean "tank"?` for the candidate nearest to what was found, or one that it begins; nothing when
// none is near.
std::string suggestion(std::string_view found, const std::vector<std::string_view>& candidates);

// "a, b or c", cut short after some twenty.
std::string listOf(const std::vector<std::string_view>& names, std::string_view last = "or");

}  // namespace kesto
