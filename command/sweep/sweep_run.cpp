#include "sweep_run.h"

#include <algorithm>
#include <map>

#include "platform.h"
#include "process_pool.h"

namespace kesto {

namespace {

// Bytes for what a member hands over beside what it records; only what is used takes memory.
constexpr std::size_t kRoom = std::size_t{1} << 28;

// Baselines are run before the members that need them, for so many members ahead.
constexpr std::size_t kAhead = 1000;
constexpr std::size_t kOfBaseline = std::size_t{1} << 62;  // added to the number of the member

class Runner {
  public:
    Runner(SweepInput& input, std::size_t jobs, SweepParts& parts, SweepFolder& folder)
        : input_(input),
          recorded_(input.shape ? input.shape->values() : 0),
          parts_(parts),
          folder_(folder),
          pool_(jobs, recorded_ * sizeof(float) + kRoom,
                [this](std::size_t number, const std::string& told, std::span<char> room) {
                    return number >= kOfBaseline ? baselineInto(number - kOfBaseline, room)
                                                 : memberInto(number, baselineCostsFrom(told), room);
                }) {}

    void run(const std::vector<std::size_t>& members, const SweepProgress& progress, const InterruptGuard& guard) {
        std::size_t done = 0;
        while (done < members.size() && !guard.wasInterrupted()) {
            while (!pool_.isFull() && (startMember(members) || startBaseline(members))) {
            }
            const auto ended = pool_.next(100);
            if (ended && ended->number >= kOfBaseline) {
                takeBaseline(*ended);
            } else if (ended) {
                take(*ended);
                ++done;
            }
            progress(done, members.size());
        }
    }

  private:
    // In processes of their own: these return how many bytes they hand over.
    std::size_t memberInto(std::size_t member, const BaselineCosts& baseline, std::span<char> room) {
        const std::span<float> recorded(reinterpret_cast<float*>(room.data()), recorded_);
        const MemberResult result = runMember(input_, member, baseline, recorded);
        return recorded.size_bytes() + toBytes(result, room.subspan(recorded.size_bytes()));
    }
    std::size_t baselineInto(std::size_t member, std::span<char> room) {
        const std::string bytes = toBytes(runBaseline(input_, member));
        std::copy(bytes.begin(), bytes.end(), room.begin());
        return bytes.size();
    }

    // True when there is one that can be started: its baseline is known.
    bool startMember(const std::vector<std::size_t>& members) {
        if (next_ == members.size() || !parts_.mayStart(members[next_])) return false;
        std::string told;
        if (const auto with = input_.baselines.of(members[next_])) {
            const auto known = baselines_.find(*with);
            if (known == baselines_.end() || !known->second) return false;
            told = *known->second;
        }
        parts_.open(members[next_]);
        pool_.start(members[next_++], told);
        return true;
    }

    // True when there is one to be run that no member before had.
    bool startBaseline(const std::vector<std::size_t>& members) {
        while (ahead_ < std::min(members.size(), next_ + kAhead)) {
            const auto with = input_.baselines.of(members[ahead_++]);
            if (!with || !baselines_.emplace(*with, std::nullopt).second) continue;
            pool_.start(kOfBaseline + *with);
            return true;
        }
        return false;
    }

    void takeBaseline(const ProcessPool::Done& ended) {
        baselines_[ended.number - kOfBaseline] =
            ended.isWhole ? std::string(ended.given)
                          : toBytes(BaselineCosts{{}, "the run that it is compared with: " + ended.lastWords});
    }

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

    SweepInput& input_;
    std::size_t recorded_;                                         // floats of a member
    std::size_t next_ = 0, ahead_ = 0;                             // members to start, and to see to the baselines of
    std::map<std::size_t, std::optional<std::string>> baselines_;  // their bytes; none: not yet known
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
