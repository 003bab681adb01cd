#include "sweep_run.h"

#include <algorithm>

#include "platform.h"
#include "process_pool.h"

namespace kesto {

namespace {

// Bytes for what a member hands over beside what it records; only what is used takes memory.
constexpr std::size_t kRoom = std::size_t{1} << 28;

class Runner {
  public:
    Runner(SweepInput& input, std::size_t jobs, SweepParts& parts, SweepFolder& folder)
        : recorded_(input.shape ? input.shape->values() : 0),
          parts_(parts),
          folder_(folder),
          pool_(jobs, recorded_ * sizeof(float) + kRoom, [this, &input](std::size_t member, std::span<char> room) {
              const std::span<float> recorded(reinterpret_cast<float*>(room.data()), recorded_);
              const MemberResult result = runMember(input, member, recorded);
              return recorded.size_bytes() + toBytes(result, room.subspan(recorded.size_bytes()));
          }) {}

    void run(const std::vector<std::size_t>& members, const SweepProgress& progress, const InterruptGuard& guard) {
        std::size_t next = 0, done = 0;
        while (done < members.size() && !guard.wasInterrupted()) {
            while (next < members.size() && !pool_.isFull() && parts_.mayStart(members[next])) {
                parts_.open(members[next]);
                pool_.start(members[next++]);
            }
            if (const auto ended = pool_.next(100)) {
                take(*ended);
                ++done;
            }
            progress(done, members.size());
        }
    }

  private:
    void take(const ProcessPool::Done& ended) {
        MemberResult result;
        if (ended.isWhole) {
            result = memberResultFrom(ended.given.substr(recorded_ * sizeof(float)));
        } else {
            result.message = ended.lastWords;
        }
        const bool hasRun = result.outcome == Outcome::finished;
        folder_.journal().add(ended.number, result);
        parts_.take(ended.number, {reinterpret_cast<const float*>(ended.given.data()), hasRun ? recorded_ : 0},
                    folder_);
    }

    std::size_t recorded_;  // floats of a member
    SweepParts& parts_;
    SweepFolder& folder_;
    ProcessPool pool_;
};

}  // namespace

void runMembers(SweepInput& input, const Slice& slice, std::size_t jobs, SweepParts& parts, SweepFolder& folder,
                const SweepProgress& progress, const InterruptGuard& guard) {
    parts.forgetUnwritten(folder);
    std::vector<std::size_t> members;
    for (std::size_t member = slice.first; member <= slice.last; ++member) {
        if (!folder.journal().has(member)) members.push_back(member);
    }
    if (members.empty()) return;
    Runner(input, jobs, parts, folder).run(members, progress, guard);
}

}  // namespace kesto
