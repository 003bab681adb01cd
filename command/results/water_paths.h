// Which water went from where to where in a run, each component counted as often as it stands for. Water that was
// delivered moves against the demand that asked for it: a component gets what it asks for and gives what is asked of
// it, so that for each component
//
//   came in + was delivered + rain + drawn + created
//       = went out + was given + evaporated + infiltrated + lost + destroyed + storage change
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "component_sums.h"
#include "demand_sources.h"

namespace kesto {

inline constexpr int kOutside = -1;

// What is on the other side where water crosses the border of the network.
enum class Border : std::uint8_t { mains, source, waterBody, openEnd, use, notRecorded };

struct Movement {
    int from, to;  // components, or kOutside
    double litres;
    Border border = Border::openEnd;  // where one of them is kOutside,
    int place = kOutside;             // and the component that stands there
    bool isAsked = false;             // delivered to who has asked for it
};

// Water that a component creates; below 0 it destroys.
struct Creation {
    int component;
    double litres;
    std::string_view reason;
};

class WaterPaths {
  public:
    WaterPaths(const Recorded& recorded, const Outlets& outlets, const Multiplicity& multiplicity,
               const ComponentSums& sums);

    const std::vector<Movement>& movements() const { return movements_; }
    const std::vector<Creation>& creations() const { return creations_; }

    // What the mains gave in each step.
    std::vector<double> mains() const;

    // Storage change of a component, as often as it counts. A delayed demand was served before it is asked for.
    double stored(int component) const;

  private:
    double sent(const Connection& connection, const Factor& factor) const;
    double asked(int component, int port) const;
    void addInputs(int component);
    void addOutputs(int component);
    void addWater(const Connection& connection);
    void addDemand(const Connection& connection);
    void addDemandAsWater(const Connection& connection);
    void addWaterAsDemand(const Connection& connection);
    void addEnd(int component, int port);
    void addReport(int component, int port);
    void addCopies(int component, int port);
    void addOwn(int component);
    void addSupply(int component);
    void addUses();
    void handBack(const DemandSources::Shares& sources, int to);
    void move(int from, int to, double litres, bool isAsked = false);
    void moveAcross(int from, int to, double litres, Border border, int place, bool isAsked = false);
    void askMains(OutputPort output, double litres, int place);
    void create(int component, double litres, std::string_view reason);

    const Recorded& recorded_;
    const Outlets& outlets_;
    const Multiplicity& multiplicity_;
    const ComponentSums& sums_;
    const DemandSources demandSources_;
    std::vector<Movement> movements_;
    std::vector<Creation> creations_;
    std::vector<OutputPort> unanswered_;  // outputs that ask the mains
    std::vector<double> handedBack_;      // by demand sources, to where the water is put out that they ask for
};

}  // namespace kesto
