#include "run_apart.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <new>
#include <stdexcept>

#include "engine_process.h"

namespace kesto {

namespace {

constexpr std::size_t kLongestText = 4000;

// How the work ended, in memory that both processes see.
struct Ending {
    bool isKnown, hasFailed;
    char text[kLongestText + 1];
};

void fail(Ending& ending, const std::string& text) {
    text.copy(ending.text, kLongestText);
    ending.hasFailed = true;
}

}  // namespace

void runApart(const std::string& cannot, std::chrono::seconds longest, const std::function<void()>& work) {
    SharedMemory memory(SharedMemory::rounded(sizeof(Ending)));
    auto& ending = *memory.take<Ending>(1);
    ChildProcess child({[&] {
                            try {
                                work();
                            } catch (const std::bad_alloc&) {
                                fail(ending, fmt::format("{}: memory ran out", cannot));
                            } catch (const std::exception& error) {
                                fail(ending, error.what());
                            }
                            std::cerr.flush();
                            ending.isKnown = true;
                        },
                        [] {}});
    const auto end = std::chrono::steady_clock::now() + longest;
    while (child.wait(1000)) {
        if (std::chrono::steady_clock::now() < end) continue;
        throw std::runtime_error(
            fmt::format("{}: the process that read it did not end within {} s", cannot, longest.count()));
    }
    if (!ending.isKnown) {
        const std::string& fault = child.fault();
        throw std::runtime_error(
            fmt::format("{}: the process that read it {}", cannot, fault.empty() ? "ended before it was done" : fault));
    }
    std::cerr << child.errors();
    if (ending.hasFailed) throw std::runtime_error(ending.text);
}

}  // namespace kesto
