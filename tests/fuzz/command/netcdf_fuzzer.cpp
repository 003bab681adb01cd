// Any bytes as results.nc: results, or an error in words. HDF5 itself crashes on some files; so the file is read as the
// command reads it, in a process of its own, and a finding is what goes wrong in our reader or outlives that process.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "branch_counters.h"
#include "engine_process.h"
#include "run_apart.h"
#include "scratch_folder.h"
#include "stored_series.h"

namespace {

constexpr const char* kFinding = "a series that is not as long as the run";

void readAll(const std::string& folder) {
    const kesto::StoredSeries stored(folder, {{"results.nc", 0, ""}});
    for (std::size_t i = 0; i < stored.entries().size(); ++i) {
        const std::size_t count = stored.valuesOf({i}).front().size();
        if (count != 0 && count != stored.days().size()) throw std::runtime_error(kFinding);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    folder.write("results.nc", {reinterpret_cast<const char*>(data), size});
    const std::span<std::uint8_t> branches = branchCounters();
    kesto::SharedMemory memory(kesto::SharedMemory::rounded(branches.size()));
    auto* const taken = memory.take<std::uint8_t>(branches.size());
    const auto tell = [&] { std::copy(branches.begin(), branches.end(), taken); };
    try {
        kesto::runApart("cannot read results.nc", std::chrono::seconds(5), [&] {
            try {
                readAll(folder.path());
            } catch (const std::exception&) {
                tell();
                throw;
            }
            tell();
        });
    } catch (const std::runtime_error& error) {
        if (!*error.what() || std::strcmp(error.what(), kFinding) == 0) __builtin_trap();
    }
    for (std::size_t i = 0; i < branches.size(); ++i) {
        branches[i] = std::max(branches[i], taken[i]);
    }
    return 0;
}
