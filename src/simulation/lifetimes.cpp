#include "simulation/lifetimes.h"

#include <algorithm>
#include <functional>
#include <queue>
#include <utility>

Places sharePlaces(const std::vector<Lifetime>& lifetimes) {
    std::vector<std::pair<std::size_t, std::size_t>> beginnings;
    for (std::size_t i = 0; i < lifetimes.size(); ++i) {
        if (lifetimes[i].first <= lifetimes[i].last) beginnings.emplace_back(lifetimes[i].first, i);
    }
    std::sort(beginnings.begin(), beginnings.end());
    Places places{std::vector<std::size_t>(lifetimes.size(), 0), 0};
    std::vector<std::size_t> free;
    using Ending = std::pair<std::size_t, std::size_t>;  // moment, place
    std::priority_queue<Ending, std::vector<Ending>, std::greater<>> endings;
    for (const auto& [first, i] : beginnings) {
        for (; !endings.empty() && endings.top().first < first; endings.pop())
            free.push_back(endings.top().second);
        if (free.empty()) free.push_back(places.count++);
        places.of[i] = free.back();
        free.pop_back();
        endings.emplace(lifetimes[i].last, places.of[i]);
    }
    places.count = std::max<std::size_t>(places.count, 1);
    return places;
}
