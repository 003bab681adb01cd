// What members record, collected part by part: at most two parts are in memory.
#pragma once

#include <map>
#include <memory>
#include <span>

#include "journal.h"
#include "sweep_files.h"
#include "sweep_folder.h"
#include "sweep_part.h"

namespace kesto {

class SweepParts {
  public:
    // Without a shape nothing is recorded.
    SweepParts(const SweepShape* shape, const Slice& slice, const SweepAttributes& attributes, PartFormat format);

    // The names of all parts of the slice.
    std::vector<std::string> names() const;

    // Members of parts that are not written are to be done again.
    void forgetUnwritten(SweepFolder& folder) const;

    // False as long as the member's part would be a third one. A member that is started has its part opened.
    bool mayStart(std::size_t member) const;
    void open(std::size_t member);

    // What a member has recorded; nothing: it has failed. Writes the part when it is complete.
    void take(std::size_t member, std::span<const float> values, SweepFolder& folder);

  private:
    std::size_t partOf(std::size_t member) const { return (member - 1) / perPart_; }
    Slice membersOf(std::size_t part) const;
    void write(std::size_t part, SweepFolder& folder);

    const SweepShape* shape_;
    Slice slice_;
    SweepAttributes attributes_;
    PartFormat format_;
    std::size_t perPart_ = 1;
    std::map<std::size_t, SweepPart> open_;
};

}  // namespace kesto
