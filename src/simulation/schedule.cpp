// Strongly connected components: Tarjan (1972), Depth-first search and linear graph algorithms, SIAM Journal on
// Computing 1, 146-160, with a stack of its own in place of recursion, since chains are long. Edges lead from a task to
// what it needs, so components come out in an order in which they can run.

#include "simulation/schedule.h"

#include <algorithm>

namespace {

constexpr std::size_t kUnseen = static_cast<std::size_t>(-1);

class DepthFirst {
  public:
    DepthFirst(const std::vector<Need>& needs, std::size_t tasks)
        : start_(tasks + 1, 0),
          needed_(needs.size()),
          number_(tasks, kUnseen),
          lowest_(tasks),
          isOpen_(tasks, false),
          needsItself_(tasks, false) {
        for (const auto& [task, need] : needs) {
            ++start_[task + 1];
            if (task == need) needsItself_[task] = true;
        }
        for (std::size_t task = 0; task < tasks; ++task)
            start_[task + 1] += start_[task];
        std::vector<std::size_t> next(start_.begin(), start_.end() - 1);
        for (const auto& [task, need] : needs)
            needed_[next[task]++] = need;
    }

    void visit(std::size_t root) {
        if (number_[root] != kUnseen) return;
        enter(root);
        while (!path_.empty()) {
            auto& [task, next] = path_.back();
            if (next == start_[task + 1]) {
                leave(task);
                continue;
            }
            const std::size_t need = needed_[next++];
            if (number_[need] == kUnseen) {
                enter(need);
            } else if (isOpen_[need]) {
                lowest_[task] = std::min(lowest_[task], number_[need]);
            }
        }
    }

    Schedule take() { return std::move(schedule_); }

  private:
    void enter(std::size_t task) {
        number_[task] = lowest_[task] = seen_++;
        isOpen_[task] = true;
        open_.push_back(task);
        path_.emplace_back(task, start_[task]);
    }

    void leave(std::size_t task) {
        path_.pop_back();
        if (!path_.empty()) lowest_[path_.back().first] = std::min(lowest_[path_.back().first], lowest_[task]);
        if (lowest_[task] == number_[task]) close(task);
    }

    // All tasks opened since this one need each other.
    void close(std::size_t task) {
        const auto first = std::find(open_.rbegin(), open_.rend(), task).base() - 1;
        std::sort(first, open_.end());
        const std::size_t begin = schedule_.order.size();
        for (auto member = first; member != open_.end(); ++member) {
            isOpen_[*member] = false;
            schedule_.order.push_back(*member);
        }
        open_.erase(first, open_.end());
        const std::size_t end = schedule_.order.size();
        const bool stepByStep = end - begin > 1 || needsItself_[task];
        if (!stepByStep && !schedule_.groups.empty() && !schedule_.groups.back().stepByStep) {
            schedule_.groups.back().end = end;
        } else {
            schedule_.groups.push_back({begin, end, stepByStep});
        }
    }

    std::vector<std::size_t> start_;  // of each task's needs in needed_; one more at the end
    std::vector<std::size_t> needed_;
    std::vector<std::size_t> number_;  // in order of first visit
    std::vector<std::size_t> lowest_;  // number of an open task that it leads to
    std::vector<bool> isOpen_;
    std::vector<bool> needsItself_;
    std::vector<std::size_t> open_;
    std::vector<std::pair<std::size_t, std::size_t>> path_;  // tasks, and which of their needs comes next
    std::size_t seen_ = 0;
    Schedule schedule_;
};

}  // namespace

Schedule makeSchedule(std::size_t tasks, const std::vector<Need>& needs, const std::vector<std::size_t>& wanted) {
    DepthFirst search(needs, tasks);
    for (const std::size_t task : wanted)
        search.visit(task);
    return search.take();
}
