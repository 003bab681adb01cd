// What the engine will make of a model's connections, found out before it runs.
#pragma once

#include <vector>

#include "model.h"

namespace kesto {

// Index of components into connections, in the order of the table.
class Network {
  public:
    explicit Network(const Model& model);

    const std::vector<int>& outgoing(int component) const { return outgoing_[static_cast<std::size_t>(component)]; }
    const std::vector<int>& incoming(int component) const { return incoming_[static_cast<std::size_t>(component)]; }

    // Each pair of sender and receiver carries one connection: the last in the table. These are the receiver's.
    std::vector<int> inputs(int component) const;

    // Components in the order in which the engine evaluates them; without those that it cannot place.
    std::vector<int> order() const;

    // Components that the engine's ordering cannot place: they lie on or behind a loop that no delay opens.
    std::vector<int> unplaced() const;

    // A delay that the ordering would have to open a loop with although it sends nothing; -1: none.
    int silentDelay() const;

    // Components that a receiving unit (service_reservoir, treatment_plant) can reach downstream, itself included.
    std::vector<bool> tracedFromReceivers() const;

    // How many sources and splitters all receiving units together look at in each step when sources are traced: those
    // downstream of each of them. Counting ends above `enough`.
    double tracingWork(double enough) const;

  private:
    double tracingWorkOf(int receiver, std::vector<int>& stamps, double& visits) const;
    void place(std::vector<bool>& placed, std::vector<int>& waiting, int& silent) const;

    const Model& model_;
    std::vector<std::vector<int>> outgoing_, incoming_;
};

}  // namespace kesto
