// A model's components and connections as the balance sees them.
#pragma once

#include <string_view>
#include <vector>

#include "carriers.h"

namespace kesto {

class NetworkView {
  public:
    explicit NetworkView(const Model& model);

    const Model& model() const { return model_; }
    const Network& network() const { return network_; }
    const Carriers& carriers() const { return carriers_; }

    int components() const { return static_cast<int>(model_.components.size()); }
    const Component& component(int index) const { return model_.components[at(index)]; }
    const Type& type(int index) const { return *component(index).type; }
    int outputs(int index) const { return static_cast<int>(type(index).out.size()); }
    const Connection& connection(int index) const { return model_.connections[at(index)]; }

    // Connections into a component; of two between the same components the later counts.
    const std::vector<int>& inputs(int index) const { return inputs_[at(index)]; }

    // Why not all that is sent to a component is read; empty: it is. Of two senders on one port the engine reads the
    // first in its calculation order.
    std::string_view whyUnread(int index) const;

  private:
    const Model& model_;
    Network network_;
    Carriers carriers_;
    std::vector<std::vector<int>> inputs_;
};

}  // namespace kesto
