// The water balance of a type: what is balanced, and what the type adds and takes by design. Each term is computed from
// signals, states and input series, not from what the engine booked: groups share potentials and multipliers scale
// them.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "required.h"

namespace kesto {

// What flows through a port, or what a type as a whole handles: water, or an amount asked for; `same` passes on what
// arrives.
enum class Carries : std::uint8_t { water, demand, same };
std::string_view toText(Carries carries);  // "water", "demand", "either"

// Where the water of a term comes from or goes to.
enum class Term : std::uint8_t {
    // Comes in.
    rain,
    drawn,              // from the ground or from surface water
    released,           // by users
    takenForDelivered,  // asked for; nobody confirms that it came
    created,            // from nothing
    // Scales or copies what passes: creates, where negative destroys; of a demand, which the water answers, the
    // reverse.
    added,
    // Goes out.
    evaporated,
    infiltrated,
    lost,
    served,  // to those who asked for it
    used,    // by those who asked for it, who let nothing go
    ended,   // recorded at the end of its path
};
inline constexpr std::size_t kTerms = 12;
std::string_view toText(Term term);  // "taken_for_delivered"

// Amounts of a step, as a set.
enum class Amounts : std::uint8_t { none = 0, in1 = 1, in2 = 2, out1 = 4, out2 = 8, rain = 16 };  // rain on the size
constexpr Amounts operator|(Amounts a, Amounts b) {
    return static_cast<Amounts>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr bool has(Amounts all, Amounts one) {
    return (static_cast<unsigned>(all) & static_cast<unsigned>(one)) != 0;
}

// One step of one component. Signals are quantities, marks of absence 0; what the component does not have is 0.
struct BalanceStep {
    double size = 0;
    double timeStep = 1;                   // d
    std::span<const double> parameters{};  // by number
    double rain = 0;                       // of its group [mm]
    double temperature = 0, temperatureMin = 0, temperatureMax = 0;
    double insolation = 0;  // of the day, above the atmosphere [kJ/m2]
    double given = 0;       // its own series: multiplier or demand
    std::array<double, 2> in{};
    std::array<double, 2> out{};   // of a recorder the first: what it received
    double before = 0, after = 0;  // the state [its unit]
    int copies = 1;                // outputs that lead on, of a type that copies

    double of(Amounts amount) const;
    double parameter(int number) const {
        const auto index = static_cast<std::size_t>(number);
        return index < parameters.size() ? parameters[index] : 0;
    }
};

// Either a function of the step, or an amount less another, times a parameter: such a term can be had from totals.
struct BalanceTerm {
    Term term;
    std::string_view meaning;
    double (*litres)(const BalanceStep& step) = nullptr;
    Amounts reads = Amounts::none;
    Amounts less = Amounts::none;
    int share = 0;   // number of the parameter; 0: the whole
    int onlyOf = 0;  // the one code of a type with several that has it; 0: all

    bool isLinear() const { return !litres; }
    bool isOf(int code) const { return onlyOf == 0 || onlyOf == code; }
    double at(const BalanceStep& step) const;
};

// How many litres the unit of the state stands for.
enum class Stored : std::uint8_t {
    nothing,
    litres,
    depth,             // mm over the size [m2]
    depthOfOneMetre2,  // mm over 1 m2: the type has no area
    underWay,          // no state: what came in and has not left yet
};

// The one answer of types that no water passes.
struct NoWaterPasses {};
inline constexpr NoWaterPasses kNoWaterPasses;

// What the balance of a type has to do with its connections.
struct BalanceWiring {
    int asksBy = 0;                // output that asks for what the type takes for delivered; asks nobody: it is created
    bool drawsFromSource = false;  // what its first output asks for is drawn from a source where it asks nobody
    bool suppliesAsWater = false;  // what is asked of it is put out as water
    bool secondIsReport = false;   // the second output is part of the first
    bool copies = false;           // each output that leads on gets all of the input
};

struct BalanceIdentity {
    Carries carries;            // what is balanced
    std::string_view identity;  // S is what is stored
    std::vector<BalanceTerm> terms;
    Stored stored;
    BalanceWiring wiring;

    BalanceIdentity(NoWaterPasses) : carries(Carries::water), stored(Stored::nothing) {}
    BalanceIdentity(Carries carried, std::string_view equation, std::vector<BalanceTerm> by, Stored store,
                    BalanceWiring wired = {})
        : carries(carried), identity(equation), terms(std::move(by)), stored(store), wiring(wired) {}

    bool isOfWater() const { return !identity.empty(); }
    std::string_view meaningOf(Term term) const;  // empty: it has none
};

}  // namespace kesto
