// What a run has come to, for a person to read.
#pragma once

#include <optional>
#include <string>

#include "results.h"

namespace kesto {

std::string summaryOf(const Results& results);

// What went wrong, when, and in which component; empty when nothing did.
std::string failureOf(const Results& results);

// What became of what was asked of one tank. `served` is none when nothing was asked, or when it is not recorded.
struct TankService {
    const Component* tank;
    bool isRecorded;
    double demand;
    double deficit;
    std::optional<double> served;  // share of the demand, 0 to 1
};
std::vector<TankService> tankServices(const Results& results);

double total(const Flow& flow, std::size_t steps);
double total(const float* values, std::size_t steps);

}  // namespace kesto
