#include "progress_bar.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "platform.h"

namespace kesto {

ProgressBar::ProgressBar(bool wanted) : isOn_(wanted && isTerminal(stderr)) {}

ProgressBar::~ProgressBar() {
    if (isShown_) fmt::print(stderr, "\r\033[K");
}

void ProgressBar::show(std::size_t done, std::size_t all) {
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    if (!isOn_ || all == 0 || elapsed < 0.3) return;  // a short run needs none
    constexpr std::size_t kWidth = 40;
    const double share = static_cast<double>(std::min(done, all)) / static_cast<double>(all);
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(kWidth));
    std::string left = "";
    if (done > 0) left = fmt::format(", {:.0f} s left", elapsed / share - elapsed);
    fmt::print(stderr, "\r[{}{}] {:3.0f} %{}\033[K", std::string(filled, '#'), std::string(kWidth - filled, ' '),
               100 * share, left);
    std::fflush(stderr);
    isShown_ = true;
}

}  // namespace kesto
