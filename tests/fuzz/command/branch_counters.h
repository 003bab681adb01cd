// How often each branch was taken, by which the fuzzer is led. Its source is compiled without such counters: where the
// compiler makes them itself, it has these names of the linker to itself.
#pragma once

#include <cstdint>
#include <span>

std::span<std::uint8_t> branchCounters();
