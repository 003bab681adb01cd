// What a run records for the account of the network.
#pragma once

#include <vector>

#include "recordings.h"
#include "series.h"

namespace kesto {

struct AccountNeeds {
    bool isWhole = true;              // each component can be balanced; false: only the network can
    std::vector<OutputPort> outputs;  // ascending
    RecordingPlan plan;               // of these and of those that were asked for

    bool contains(OutputPort output) const;
};

// Of outputs that were asked for and those that the account needs. Water that only moves within the network need not be
// recorded for the account; a balance of each component needs it all, and so does the account where some outputs cannot
// be recorded unchanged.
AccountNeeds needsOf(const Model& model, SeriesValues& series, const std::vector<OutputPort>& asked, bool forBalance);

}  // namespace kesto
