#include "sweep_parts.h"

#include <algorithm>

namespace kesto {

namespace {

constexpr std::size_t kMostOpen = 2;

}  // namespace

SweepParts::SweepParts(const SweepShape* shape, const Slice& slice, const SweepAttributes& attributes,
                       PartFormat format)
    : shape_(shape), slice_(slice), attributes_(attributes), format_(format) {
    if (shape) perPart_ = membersPerPart(*shape);
}

Slice SweepParts::membersOf(std::size_t part) const {
    return {std::max(part * perPart_ + 1, slice_.first), std::min((part + 1) * perPart_, slice_.last)};
}

std::vector<std::string> SweepParts::names() const {
    std::vector<std::string> names;
    for (std::size_t part = partOf(slice_.first); shape_ && part <= partOf(slice_.last); ++part) {
        names.push_back(partName(part, format_));
    }
    return names;
}

void SweepParts::forgetUnwritten(SweepFolder& folder) const {
    if (!shape_) return;
    for (std::size_t part = partOf(slice_.first); part <= partOf(slice_.last); ++part) {
        if (folder.hasPart(partName(part, format_))) continue;
        const Slice members = membersOf(part);
        for (std::size_t member = members.first; member <= members.last; ++member) {
            folder.journal().forget(member);
        }
    }
}

bool SweepParts::mayStart(std::size_t member) const {
    return !shape_ || open_.size() < kMostOpen || open_.contains(partOf(member));
}

void SweepParts::open(std::size_t member) {
    if (!shape_) return;
    const Slice members = membersOf(partOf(member));
    open_.try_emplace(partOf(member), *shape_, members.first, members.size());
}

void SweepParts::take(std::size_t member, std::span<const float> values, SweepFolder& folder) {
    if (!shape_) return;
    SweepPart& part = open_.at(partOf(member));
    if (values.empty()) {
        part.setMissing(member);
    } else {
        part.set(member, values);
    }
    if (part.isComplete()) write(partOf(member), folder);
}

void SweepParts::write(std::size_t part, SweepFolder& folder) {
    const std::string name = partName(part, format_);
    if (format_ == PartFormat::csv) {
        open_.at(part).writeCsv(folder.aside(name));
    } else {
        open_.at(part).write(folder.aside(name), attributes_);
    }
    open_.erase(part);
    folder.addPart(name);
}

}  // namespace kesto
