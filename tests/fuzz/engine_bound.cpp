#include <algorithm>
#include <bit>
#include <map>
#include <set>

#include "components/lookup.h"
#include "components/type_codes.h"
#include "engine_record.h"
#include "simulation/dispatch.h"

namespace {

constexpr std::int64_t kMostSteps = 40;
constexpr int kMostStepsOfLongPaths = 2;
constexpr std::uint64_t kLongPaths = 300;
constexpr std::uint64_t kMostVisits = 3000;
constexpr int kDeepest = 1000;

std::int32_t typeOf(const AUEglobals& record, std::int32_t id) {
    for (std::int32_t i = 0; i < record.nComps; ++i) {
        if (record.Net_Compnt[i].id == static_cast<float>(id)) return nint(record.Net_Compnt[i].techid);
    }
    return 0;
}

void boundSteps(Call& call, std::int64_t most) {
    auto& [first, last] = call;
    const auto before = static_cast<std::int32_t>(static_cast<std::uint32_t>(first) - 1U);
    last = static_cast<std::int32_t>(std::min(std::int64_t{last}, std::int64_t{before} + most));
}

// Nodes that the walk over all paths downstream of a component visits, at most kMostVisits + 1.
class Visits {
  public:
    explicit Visits(const AUEglobals& record) : record_(record) {
        for (std::int32_t i = 0; i < record.nConns; ++i) {
            const ConnectionRow& row = record.Net_Conn[i];
            next_[row.senderId].insert_or_assign(row.senderPort, row.receiverId);
        }
    }

    std::uint64_t from(std::int32_t start) {
        visits_ = 0;
        walk(start, 0);
        return visits_;
    }

  private:
    void walk(std::int32_t id, int depth) {
        if (depth == kDeepest || visits_ > kMostVisits) return;
        ++visits_;
        if (depth > 0 && typeOf(record_, id) == code::kServiceReservoir) return;
        const auto next = next_.find(id);
        if (next == next_.end()) return;
        for (const auto& [port, receiver] : next->second)
            walk(receiver, depth + 1);
    }

    const AUEglobals& record_;
    std::map<std::int32_t, std::map<std::int32_t, std::int32_t>> next_;
    std::uint64_t visits_ = 0;
};

std::uint64_t visitsOfReceivers(const AUEglobals& record) {
    Visits visits(record);
    std::uint64_t sum = 0;
    for (std::int32_t i = 0; i < record.nComps; ++i) {
        const ComponentType* const type = findType(truncated(static_cast<double>(record.Net_Compnt[i].techid)));
        if (!type || !type->isReceiver()) continue;
        sum += visits.from(truncated(static_cast<double>(record.Net_Compnt[i].id)));
        if (sum > kMostVisits) break;
    }
    return sum;
}

// Whether a walk along first connections can go round through a multiplier.
bool multipliesForever(const AUEglobals& record) {
    std::map<std::int32_t, std::int32_t> next;
    for (std::int32_t i = 0; i < record.nConns; ++i)
        next.try_emplace(record.Net_Conn[i].senderId, record.Net_Conn[i].receiverId);
    for (const auto& [start, receiver] : next) {
        if (typeOf(record, start) != code::kMultiplier) continue;
        std::set<std::int32_t> seen;
        for (auto at = next.find(start); at != next.end() && seen.insert(at->first).second;) {
            if (at->second == start) return true;
            at = next.find(at->second);
        }
    }
    return false;
}

// Powers of two go to zero or infinity, stand still or come round soon.
float powerOfTwo(float value) {
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) & 0xFF800000U);
}

}  // namespace

void bound(FuzzedHost& host) {
    AUEglobals& record = host.host->record();
    std::int64_t mostSteps = kMostSteps;
    if (record.BuildTree != 0) {
        const std::uint64_t visits = visitsOfReceivers(record);
        if (visits > kLongPaths) mostSteps = kMostStepsOfLongPaths;
        if (visits > kMostVisits) record.BuildTree = 0;
    }
    for (Call& call : host.calls)
        boundSteps(call, mostSteps);
    if (multipliesForever(record)) {
        for (std::int32_t i = 0; i < record.nMultpls; ++i) {
            float* const values = record.Multpls[i].Value;
            std::transform(values, values + std::max(record.nSteps, 0), values, powerOfTwo);
        }
    }
}
