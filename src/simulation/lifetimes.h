// Which arrays can share memory, since they are never needed at the same time.
#ifndef KESTO_SIMULATION_LIFETIMES_H
#define KESTO_SIMULATION_LIFETIMES_H

#include <cstddef>
#include <vector>

// From the first to the last moment at which an array is used, both included. Where first is after last it is not used.
struct Lifetime {
    std::size_t first = static_cast<std::size_t>(-1);
    std::size_t last = 0;
};

// A place for each array; arrays whose lifetimes overlap have different places. The place that became free last is
// taken first, while it is still in the caches. Unused arrays have place 0.
struct Places {
    std::vector<std::size_t> of;
    std::size_t count = 1;
};
Places sharePlaces(const std::vector<Lifetime>& lifetimes);

#endif
