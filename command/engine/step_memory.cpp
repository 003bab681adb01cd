#include "step_memory.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "network.h"

namespace kesto {

namespace {

struct Rememberer {
    int code;
    std::string_view what;
};

// Delays and quota limiters read back their own logs, which begin with the run; radiation units share the last 30
// ranges of temperature.
constexpr std::array kRemember{
    Rememberer{code::kDelay, "what is on its way through it"},
    Rememberer{code::kQuotaLimiter, "what it has let pass in the month and the year"},
    Rememberer{code::kSolarPanel, "the last 30 ranges of temperature"},
    Rememberer{code::kNetRadiation, "the last 30 ranges of temperature"},
};

// All components share four signals, two inputs and two outputs. A quality that one of them does not set is what an
// earlier component left: of the same step, or, if no earlier one sets it, of the step before.
class Leftovers {
  public:
    Leftovers(const Model& model, const std::vector<OutputPort>& recorded)
        : model_(model), network_(model), order_(network_.order()), recorded_(recorded) {}

    void add(std::vector<Memory>& memories) const {
        for (const int port : {1, 2}) {
            find([&](int i) { return isFed(i, port); }, [&](int i) { return readsInput(i, port); },
                 [&](int) { return fmt::format("a quality on its input {}, to which nothing sends", port); }, memories);
        }
        find([&](int i) { return setsQuality(i); }, [&](int i) { return leavesQuality(i); },
             [&](int i) { return fmt::format("the quality of \"{}\", which it does not set", outputName(of(i), 2)); },
             memories);
    }

  private:
    const Component& of(int i) const { return model_.components[at(i)]; }

    template <class Fills, class Reads, class What>
    void find(const Fills& fills, const Reads& reads, const What& what, std::vector<Memory>& memories) const {
        const auto first = std::find_if(order_.begin(), order_.end(), fills);
        if (first == order_.end()) return;  // it is zero in all steps
        for (auto component = order_.begin(); component != first; ++component) {
            if (reads(*component)) memories.push_back({*component, what(*component)});
        }
    }

    bool isFed(int i, int port) const {
        if (of(i).code == code::kJunction || of(i).code == code::kMixer) return false;  // they sum their inputs up
        const std::vector<int> inputs = network_.inputs(i);
        const bool isAlone = inputs.size() == 1;
        return std::any_of(inputs.begin(), inputs.end(), [&](int connection) {
            return model_.connections[at(connection)].toPort == port && !(port == 2 && isAlone);
        });
    }

    bool readsInput(int i, int port) const {
        if (of(i).code == code::kJunction || of(i).code == code::kMixer) return false;
        const int inputs = of(i).type->inputs();
        return (inputs == kAnyInputs ? port == 1 : inputs >= port) && !isFed(i, port);
    }

    bool setsQuality(int i) const { return of(i).type->out.size() == 2 && !of(i).type->out[1].isQualityLeft; }

    bool leavesQuality(int i) const {
        if (of(i).type->out.size() < 2 || !of(i).type->out[1].isQualityLeft) return false;
        const OutputPort output{i, 2};
        const std::vector<int>& outgoing = network_.outgoing(i);
        return std::find(recorded_.begin(), recorded_.end(), output) != recorded_.end() ||
               std::any_of(outgoing.begin(), outgoing.end(),
                           [&](int connection) { return model_.connections[at(connection)].fromPort == 2; });
    }

    const Model& model_;
    Network network_;
    std::vector<int> order_;
    const std::vector<OutputPort>& recorded_;
};

}  // namespace

std::vector<Memory> memoriesBesideStates(const Model& model, const std::vector<OutputPort>& recorded) {
    std::vector<Memory> memories;
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        const auto* const known = std::find_if(kRemember.begin(), kRemember.end(), [&](const Rememberer& one) {
            return one.code == model.components[i].code;
        });
        if (known != kRemember.end()) memories.push_back({static_cast<int>(i), std::string(known->what)});
    }
    Leftovers(model, recorded).add(memories);
    return memories;
}

}  // namespace kesto
