// The members of a sweep run, each in a process of its own, several at a time.
#pragma once

#include "sweep_check.h"
#include "sweep_folder.h"
#include "sweep_parts.h"

namespace kesto {

// Runs those that the journal of the folder lacks, and notes there how each has ended. Stops when `guard` has noted a
// request to. Throws std::runtime_error when nothing can be written, or no process be started.
void runMembers(SweepInput& input, const Slice& slice, std::size_t jobs, SweepParts& parts, SweepFolder& folder,
                const SweepProgress& progress, const InterruptGuard& guard);

}  // namespace kesto
