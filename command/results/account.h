// The account of the whole network over a run: where its water came from and where it went, each litre once. What a
// store or a source delivers to a user is the water that the user lets go: it counts where it comes from.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "balance.h"
#include "shown_unit.h"

namespace kesto {

enum class AccountKind : std::uint8_t {
    rain,
    drawn,  // from the ground, rivers and other sources
    mains,  // demands that no component answers
    waterBody,
    openEnd,  // an output that leads nowhere, or only to a logger
    used,     // by demand sources
    evaporated,
    infiltrated,
    lost,
    storage,
    notRecorded,  // from or to components that cannot be recorded unchanged
    created,      // from nothing
    destroyed,
    unexplained,  // error of a component whose balance does not close
    rounding,     // what is left
};
inline constexpr std::size_t kAccountKinds = 15;

struct AccountKindInfo {
    std::string_view name;     // in files: "water_body"
    std::string_view heading;  // for people: "water body"
    bool isIn, isOut;          // on which side of the account it can stand
};
const AccountKindInfo& info(AccountKind kind);
AccountKind kindOf(Border border);

struct AccountEntry {
    bool isIn;
    AccountKind kind;
    int component;  // or kOutside: of none
    double litres;
    std::string_view reason = {};  // why the component creates or destroys water
};

struct Account {
    const Model* model = nullptr;
    std::vector<AccountEntry> entries;  // in, then out; by kind, then in the order of the components
    // Components that the account has nothing of, with the reason.
    std::vector<std::pair<int, std::string>> notRecorded;

    std::string_view nameOf(const AccountEntry& entry) const;
    double total(bool isIn) const;
    double total(bool isIn, AccountKind kind) const;
};

Account accountOf(const Recorded& recorded, const ComponentSums& sums, const WaterPaths& paths, const Balance& balance);

// A table for people; a CSV file; its name is returned.
std::string toText(const Account& account, Detail detail);
std::string writeAccountCsv(const Account& account, const std::string& folder);

}  // namespace kesto
