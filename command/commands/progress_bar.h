// How far a run is, and how long it will still take: on a terminal only.
//
// By hand: Debian has no C++ library for it.
#pragma once

#include <chrono>
#include <cstddef>

namespace kesto {

class ProgressBar {
  public:
    explicit ProgressBar(bool wanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::size_t done, std::size_t all);

  private:
    using Clock = std::chrono::steady_clock;
    bool isOn_;
    bool isShown_ = false;
    Clock::time_point start_ = Clock::now();
};

}  // namespace kesto
