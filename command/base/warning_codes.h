// What a warning is about, under a short name that stays: programs read it, and a model accepts by it what is meant.
//
// One row each: diagnostics.warning("no-input", …) compiles only with the name of a row.
#pragma once

#include <cstdint>
#include <string_view>

namespace kesto {

// A strict run fails on warnings about wiring, values and results. Notes say how something was understood, or what a
// run leaves out: they are printed as notes.
// In the order of the texts that codes_command.cpp has for them.
enum class About : std::uint8_t { wiring, values, results, note };

struct WarningCode {
    std::string_view name;
    About about;
    std::string_view meaning;  // for `kesto codes` and docs/guide/warnings.md
};

inline constexpr WarningCode kWarningCodes[] = {
    {"replaced-connection", About::wiring, "two connections between the same two components; the later counts"},
    {"same-input", About::wiring, "both senders use one input; the other input gets nothing"},
    {"unread-input", About::wiring, "the only sender uses input 2, but the component reads input 1"},
    {"water-to-demand", About::wiring, "water reaches an input that takes a demand"},
    {"demand-to-water", About::wiring, "a demand reaches an input that takes water"},
    {"mixed-signals", About::wiring, "water and a demand are added up"},
    {"doubled-water", About::wiring, "an output with water feeds several inputs, each of which gets all of it"},
    {"doubled-demand", About::wiring, "a demand is asked several times"},
    {"no-quality", About::wiring, "a signal without a quality is mixed by quality"},
    {"no-source", About::wiring, "a loop that no source feeds"},
    {"no-input", About::wiring, "nothing sends to the component"},
    {"no-output", About::wiring, "the component sends to nothing"},
    {"few-reservoirs", About::wiring, "the component finds fewer reservoirs in its group than it works with"},
    {"unused-brand", About::values, "no component uses the brand"},
    {"unread-size", About::values, "the type does not read its size"},
    {"unread-parameter", About::values, "no component of the brand reads the parameter"},
    {"unread-series", About::values, "no component reads the series"},
    {"replaced-value", About::values, "a value of --set wins over that of a scenario of the sweep"},
    {"polar-days", About::values, "days without sunrise or sunset"},
    {"frost", About::values, "a temperature below 0 degC where the model has none"},
    {"odd-size", About::values, "an area or a capacity that cannot be"},
    {"odd-fraction", About::values, "a fraction that is not between 0 and 1"},
    {"odd-rate", About::values, "rates that take more out of a store in a step than it holds"},
    {"odd-value", About::values, "a parameter, a series or an initial value beyond its range"},
    {"over-full", About::values, "an initial storage above what the component can hold"},
    {"low-wind", About::values, "a wind that is low for km/h"},
    {"negative-rain", About::values, "rain below 0"},
    {"time-step", About::values, "a time step other than one day"},
    {"mixed-units", About::values, "a group books millimetres and litres together"},
    {"mixed-energy", About::values, "a group books heat and the energy of machines together"},
    {"id-digits", About::values, "ids that source tracing may mix up"},
    {"unused-state", About::values, "a store in the results to go on from that the model does not have"},
    {"approximate", About::results, "a run that goes on without what a component remembers beside the states"},
    {"not-finite", About::results, "a recorded flow, state or potential that is infinite or not a number"},
    {"odd-quality", About::results, "a quality that is below -1 or above 1e9"},
    {"empty-quality", About::results, "a quality that is infinite or not a number on days without water"},
    {"created-water", About::results, "a component creates or destroys water"},
    {"open-balance", About::results, "a balance that does not close, or whose figures are no numbers"},
    {"long-tracing", About::note, "tracing sources takes long: many receiving units with many sources each"},
    {"quoted-name", About::note, "a name that needs quotes, or its table, after --set and in scenarios"},
    {"part-year", About::note, "the first year has its whole yearly allowance"},
    {"start-up", About::note, "the radiation of the first 30 days is too large"},
    {"not-recorded", About::note, "outputs that cannot be recorded unchanged"},
    {"read-as", About::note, "how a file that is not plain CSV was understood"},
};

// The name of a row, known to be one when the program is compiled.
class WarningName {
  public:
    consteval WarningName(const char* name) : code_(find(name)) {}
    const WarningCode& code() const { return *code_; }

  private:
    static consteval const WarningCode* find(std::string_view name) {
        for (const WarningCode& code : kWarningCodes) {
            if (code.name == name) return &code;
        }
        throw "no warning has this name";
    }
    const WarningCode* code_;
};

}  // namespace kesto
