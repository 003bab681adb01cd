// What a store cannot serve of a demand it asks of others. That water comes to it and goes on at once to who has asked:
// in a picture of where water flows, it goes there beside the store.
#pragma once

#include <map>

#include "water_paths.h"

namespace kesto {

class Bypass {
  public:
    Bypass(const Recorded& recorded, const WaterPaths& paths);

    // Whether the movement brings what passes the store that it leads to.
    bool isEntered(const Movement& movement) const;

    // The part of the movement that has passed the store which it comes from; the rest is the store's own.
    double share(const Movement& movement) const;

  private:
    std::map<int, double> shares_;  // by store: of what is delivered by it
};

}  // namespace kesto
