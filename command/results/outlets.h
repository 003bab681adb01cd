// Where the signals of each output lead, as far as water is concerned. A logger beside other receivers only records.
#pragma once

#include <array>
#include <vector>

#include "network_view.h"

namespace kesto {

struct Outlet {
    bool counts = true;            // false: a report of a part of another output, or a copy that leads nowhere
    std::vector<int> connections;  // to what is no logger
    int logger = -1;               // the first

    bool isEnd() const { return counts && connections.empty(); }
};

class Outlets {
  public:
    explicit Outlets(const NetworkView& network);

    const Outlet& of(int component, int port) const { return outlets_[at(component)][at(port) - 1]; }

    // Whether a demand that leaves an output is asked of another component: one that records it does not answer.
    bool asks(int component, int port) const;

    // Outputs that count, of a type that copies.
    int copies(int component) const;

  private:
    void settle(int component);

    const NetworkView& network_;
    std::vector<std::array<Outlet, 2>> outlets_;
};

}  // namespace kesto
