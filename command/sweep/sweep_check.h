// All members checked before the first of them runs.
#pragma once

#include <functional>
#include <set>
#include <string>

#include "findings.h"
#include "member.h"
#include "sweep_files.h"

namespace kesto {

class InterruptGuard;

// Members done of all; called now and then.
using SweepProgress = std::function<void(std::size_t done, std::size_t all)>;

struct SweepCheck {
    Findings findings;
    std::set<std::string> files;  // that members read
};

// By so many processes at a time. Stops early when `guard` has noted a request to stop. Throws std::runtime_error when
// a process dies.
SweepCheck checkMembers(SweepInput& input, const Slice& slice, std::size_t jobs, const SweepProgress& progress,
                        const InterruptGuard& guard);

}  // namespace kesto
