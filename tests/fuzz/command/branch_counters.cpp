#include "branch_counters.h"

extern "C" __attribute__((visibility("hidden"))) std::uint8_t __start___sancov_cntrs[], __stop___sancov_cntrs[];

std::span<std::uint8_t> branchCounters() {
    return {__start___sancov_cntrs, __stop___sancov_cntrs};
}
