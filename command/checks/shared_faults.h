// Faults of a brand, a group or a series, reported once, however many components have them.
#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

#include "diagnostics.h"
#include "model.h"

namespace kesto {

class SharedFaults {
  public:
    // `before` and `after` are the text around the component, as in 'needed by component "wc" (appliance) and 3 more'.
    void addError(ErrorName code, const Place& place, const Component& component, const std::string& before,
                  const std::string& after = "");
    void addWarning(WarningName code, const Place& place, const Component& component, const std::string& before,
                    const std::string& after = "");

    void report(Diagnostics& diagnostics) const;

  private:
    using Code = std::variant<ErrorName, WarningName>;
    void add(Code code, const Place& place, const Component& component, const std::string& before,
             const std::string& after);

    struct Fault {
        Code code;
        Place place;
        const Component* first;
        std::string before, after;
        std::size_t components = 0;
    };
    std::vector<Fault> faults_;  // in the order in which they were met
    std::map<std::string, std::size_t> index_;
};

}  // namespace kesto
