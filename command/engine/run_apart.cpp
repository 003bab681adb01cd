#include "run_apart.h"

#include <fmt/format.h>

#include <iostream>
#include <new>
#include <stdexcept>

#include "engine_process.h"

namespace kesto {

void runApart(const std::string& cannot, std::chrono::seconds longest, const std::function<void()>& work) {
    const auto failure = [&]() -> std::string {
        try {
            work();
            return "";
        } catch (const std::bad_alloc&) {
            return fmt::format("{}: memory ran out", cannot);
        } catch (const std::exception& error) {
            return error.what();
        }
    };
    ChildProcess child({failure, [] {}});
    const auto end = std::chrono::steady_clock::now() + longest;
    while (child.wait(1000)) {
        if (std::chrono::steady_clock::now() < end) continue;
        throw std::runtime_error(
            fmt::format("{}: the process that read it did not end within {} s", cannot, longest.count()));
    }
    if (!child.answer()) {
        const std::string& fault = child.fault();
        throw std::runtime_error(
            fmt::format("{}: the process that read it {}", cannot, fault.empty() ? "ended before it was done" : fault));
    }
    std::cerr << child.errors();
    if (!child.answer()->empty()) throw std::runtime_error(*child.answer());
}

}  // namespace kesto
