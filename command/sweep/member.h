// One member of a sweep: its model checked, and its run, in a process of its own.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>

#include "account_needs.h"
#include "baselines.h"
#include "design.h"
#include "member_result.h"
#include "model_document.h"
#include "read_options.h"
#include "series.h"
#include "sweep_shape.h"

namespace kesto {

// What all members share: read once, before the first of them.
struct SweepInput {
    ModelDocument document;
    ReadOptions read;
    Design design;
    std::string record = "none";  // outputs, as `kesto run --record` takes them
    Every every = Every::day;
    bool allFigures = false;  // those of components, too
    SeriesCache cache = {};
    std::optional<SweepShape> shape = {};  // of what is recorded; none: nothing is
    Baselines baselines = {};
};

// The model of a member, with its series.
struct MemberModel {
    // With a baseline, the model of the run that the member is compared with.
    MemberModel(SweepInput& input, std::size_t member, Diagnostics& diagnostics, const std::string& baseline = {});

    Model model;
    SeriesValues series;
};

// What cannot be run is reported. The files that the member reads, beside the model's tables, are added to `files`.
void checkMember(SweepInput& input, std::size_t member, Diagnostics& diagnostics, std::set<std::string>& files);

// Of the keys that members vary, by the model of this one.
std::vector<std::string> keyUnits(SweepInput& input, std::size_t member);

// What is recorded of each member; none where the member cannot be run, which its check reports.
std::optional<SweepShape> shapeOf(SweepInput& input, std::size_t member);

// Both run the engine in this process. A member puts what is recorded into `recorded`; it is compared with `baseline`.
BaselineCosts runBaseline(SweepInput& input, std::size_t member);
MemberResult runMember(SweepInput& input, std::size_t member, const BaselineCosts& baseline, std::span<float> recorded);

}  // namespace kesto
