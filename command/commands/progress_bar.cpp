#include "progress_bar.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platform.h"

namespace kesto {

namespace {

constexpr std::size_t kWidest = 40;    // of the bar itself
constexpr std::size_t kNarrowest = 5;  // a shorter one tells nothing

}  // namespace

std::string progressLine(std::size_t columns, double share, double secondsLeft, const std::string& rate) {
    std::string text = fmt::format("{:3.0f} %", 100 * share);
    if (!rate.empty()) text += ", " + rate;
    if (std::isfinite(secondsLeft)) text += fmt::format(", {:.0f} s left", secondsLeft);
    const std::size_t room = columns - std::min(columns, text.size() + 4);
    const std::size_t width = std::min(room, kWidest);
    if (width >= kNarrowest) {
        const auto filled = static_cast<std::size_t>(share * static_cast<double>(width));
        text = fmt::format("[{}{}] {}", std::string(filled, '#'), std::string(width - filled, ' '), text);
    }
    return text.substr(0, columns - 1);
}

ProgressBar::ProgressBar(bool wanted, std::string counted)
    : isOn_(wanted && terminalColumns(stderr) > 0), counted_(std::move(counted)) {}

ProgressBar::~ProgressBar() {
    if (isShown_) fmt::print(stderr, "\r\033[K");
}

void ProgressBar::show(std::size_t done, std::size_t all) {
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    if (!isOn_ || all == 0 || elapsed < std::max(0.3, shown_ + 0.1)) return;  // a short run needs none
    shown_ = elapsed;
    const int columns = terminalColumns(stderr);  // now: windows change
    if (columns < 1) return;
    const double share = static_cast<double>(std::min(done, all)) / static_cast<double>(all);
    std::string rate;
    if (!counted_.empty()) rate = fmt::format("{:.0f} {}/s", static_cast<double>(done) / elapsed, counted_);
    fmt::print(stderr, "\r{}\033[K",
               progressLine(static_cast<std::size_t>(columns), share, elapsed / share - elapsed, rate));
    std::fflush(stderr);
    isShown_ = true;
}

}  // namespace kesto
