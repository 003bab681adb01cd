#include "sweep_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "platform.h"
#include "process_pool.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kRoom = std::size_t{1} << 26;
constexpr std::size_t kMostOfBatch = 1000;

// What one process finds out about some members.
std::size_t checkBatch(SweepInput& input, std::size_t first, std::size_t last, std::span<char> room) {
    Findings findings(input.design.tablePath());
    std::set<std::string> files;
    for (std::size_t member = first; member <= last; ++member) {
        Diagnostics diagnostics;
        checkMember(input, member, diagnostics, files);
        findings.add(member, diagnostics);
    }
    const Json found{{"findings", findings.rows()}, {"files", files}};
    const std::string text = found.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > room.size()) throw std::length_error("there is too much to say about the members");
    std::copy(text.begin(), text.end(), room.begin());
    return text.size();
}

}  // namespace

SweepCheck checkMembers(SweepInput& input, const Slice& slice, std::size_t jobs, const SweepProgress& progress,
                        const InterruptGuard& guard) {
    SweepCheck check{Findings(input.design.tablePath()), {}};
    const std::size_t size = std::clamp<std::size_t>(slice.size() / (jobs * 4), 1, kMostOfBatch);
    const auto lastOf = [&](std::size_t first) { return std::min(first + size - 1, slice.last); };
    ProcessPool pool(jobs, kRoom, [&](std::size_t first, const std::string&, std::span<char> room) {
        return checkBatch(input, first, lastOf(first), room);
    });
    std::size_t next = slice.first, done = 0;
    while ((next <= slice.last || !pool.isIdle()) && !guard.wasInterrupted()) {
        for (; next <= slice.last && !pool.isFull(); next = lastOf(next) + 1) {
            pool.start(next);
        }
        if (const auto batch = pool.next(100)) {
            if (!batch->isWhole) {
                throw std::runtime_error(fmt::format("the process that checked members {} to {} ended: {}",
                                                     batch->number, lastOf(batch->number), batch->lastWords));
            }
            const Json found = Json::parse(batch->given);
            check.findings.add(found.at("findings"));
            for (const Json& file : found.at("files")) {
                check.files.insert(file.get<std::string>());
            }
            done += lastOf(batch->number) + 1 - batch->number;
        }
        progress(done, slice.size());
    }
    return check;
}

}  // namespace kesto
