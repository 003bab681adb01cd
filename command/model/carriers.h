// What each signal of a model is, water or a demand, also where a type passes on what reaches it.
#pragma once

#include <vector>

#include "network.h"

namespace kesto {

class Carriers {
  public:
    Carriers(const Model& model, const Network& network);

    // What the component as a whole handles; `same` where it passes on what reaches it and nothing does.
    Carries of(int component) const { return carriers_[static_cast<std::size_t>(component)]; }

    // Ports count from 1.
    Carries ofOutput(int component, int port) const;
    Carries ofInput(int component, int port) const;

  private:
    using Lists = std::vector<std::vector<int>>;
    void spread(const Lists& outgoing, Carries carries);

    const Model& model_;
    std::vector<Carries> carriers_;
};

}  // namespace kesto
