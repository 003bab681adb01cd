// A table of the model file while it is read: each key is asked for once, and what nobody asked for is an error.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "diagnostics.h"
#include "value.h"

namespace kesto {

class Section {
  public:
    // `what` names the table in messages: [simulation], component "wc".
    Section(const Value& table, const std::string& what, Diagnostics& diagnostics);

    const Value* find(std::string_view key);
    const Value* require(std::string_view key, std::string_view expected);

    std::optional<PlacedText> text(std::string_view key);
    std::optional<PlacedText> requireText(std::string_view key);
    std::optional<bool> boolean(std::string_view key);
    std::optional<Placed<Day>> date(std::string_view key);
    std::optional<int> integer(std::string_view key, int least, int most);

    // A number in `unit`, or a text such as "2 m3" that is converted into it.
    std::optional<Placed<double>> quantity(std::string_view key, std::string_view unit);

    // Keys that are known though this table has no use for them now.
    void allow(std::string_view key) { known_.emplace(key); }

    // Reports the keys that were not asked for.
    void finish();

    const std::string& what() const { return what_; }
    const Place& place() const { return table_.place; }
    Diagnostics& diagnostics() { return diagnostics_; }
    void wrong(const Value& value, std::string_view key, std::string_view expected);

  private:
    const Value& table_;
    std::string what_;
    Diagnostics& diagnostics_;
    std::set<std::string, std::less<>> known_;
};

// The number, or the text with a unit, in `unit`; an error is reported as "WHAT: found ..., expected ...".
std::optional<double> readQuantity(const Value& value, std::string_view unit, const std::string& what,
                                   Diagnostics& diagnostics);

}  // namespace kesto
