// How far a run is, and how long it will still take: on a terminal only, and in as many columns as it has.
//
// By hand: Debian has no C++ library for it.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace kesto {

// "[####    ]  50 %, 812 members/s, 3 s left", the rate where there is one, or as much of it as goes into less than so
// many columns, at least one: a line that fills them all cannot be written over.
std::string progressLine(std::size_t columns, double share, double secondsLeft, const std::string& rate = {});

class ProgressBar {
  public:
    // `counted` names what is done, where a rate is to be shown: "members".
    explicit ProgressBar(bool wanted, std::string counted = {});
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::size_t done, std::size_t all);

  private:
    using Clock = std::chrono::steady_clock;
    bool isOn_;
    std::string counted_;
    bool isShown_ = false;
    double shown_ = 0;  // seconds after the start
    Clock::time_point start_ = Clock::now();
};

}  // namespace kesto
