// How a splitter divides a flow, which receiving units also ask of the splitters on their paths.
#ifndef KESTO_COMPONENTS_SPLITTER_H
#define KESTO_COMPONENTS_SPLITTER_H

#include <cstdint>

#include "components/model.h"

// Quantities at both outputs.
struct SplitFlow {
    float first;
    float second;
};

class Splitting {
  public:
    // Stores that count together.
    struct Group {
        float beta;
        float C;
        std::size_t nMembers;
        const float* const* held;  // WatQuant of each member
    };

    // Of the splitter with an id, as it stands in the table.
    Splitting(Binder& b, std::int32_t id);

    // For a quantity at the input.
    SplitFlow at(const Block& block, std::int32_t j, float quantity) const;

  private:
    float P0_ = 0.0F;
    std::size_t nGroups_ = 0;
    const Group* groups_ = nullptr;
};

#endif
