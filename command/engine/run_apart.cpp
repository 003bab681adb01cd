#include "run_apart.h"

#include <fmt/format.h>

#include <iostream>
#include <new>
#include <stdexcept>

#include "engine_process.h"

namespace kesto {

namespace {

// Before what a process has to say.
constexpr char kAnswer = '=';
constexpr char kFailure = '!';

}  // namespace

void runApart(const std::string& cannot, std::chrono::seconds longest, const std::function<void()>& work) {
    answerApart(cannot, longest, [&] {
        work();
        return std::string();
    });
}

std::string answerApart(const std::string& cannot, std::chrono::seconds longest,
                        const std::function<std::string()>& work) {
    const auto say = [&]() -> std::string {
        try {
            return kAnswer + work();
        } catch (const std::bad_alloc&) {
            return fmt::format("{}{}: memory ran out", kFailure, cannot);
        } catch (const std::exception& error) {
            return kFailure + std::string(error.what());
        }
    };
    ChildProcess child({say, [] {}});
    const auto end = std::chrono::steady_clock::now() + longest;
    while (child.wait(1000)) {
        if (std::chrono::steady_clock::now() < end) continue;
        throw std::runtime_error(
            fmt::format("{}: the process that tried it did not end within {} s", cannot, longest.count()));
    }
    if (!child.answer() || child.answer()->empty()) {
        const std::string& fault = child.fault();
        throw std::runtime_error(fmt::format("{}: the process that tried it {}", cannot,
                                             fault.empty() ? "ended before it was done" : fault));
    }
    std::cerr << child.errors();
    const std::string said = child.answer()->substr(1);
    if (child.answer()->front() == kFailure) throw std::runtime_error(said);
    return said;
}

}  // namespace kesto
