// The order in which tasks run over a block of steps, when each needs results of others.
#ifndef KESTO_SIMULATION_SCHEDULE_H
#define KESTO_SIMULATION_SCHEDULE_H

#include <cstddef>
#include <utility>
#include <vector>

// Tasks that run one after the other. Tasks that need each other take turns step by step; the others run a whole block
// at a time.
struct TaskGroup {
    std::size_t begin;  // in the order
    std::size_t end;
    bool stepByStep;
};

struct Schedule {
    std::vector<std::size_t> order;
    std::vector<TaskGroup> groups;
};

// A task and one whose results it needs, of the same step or of an earlier one.
using Need = std::pair<std::size_t, std::size_t>;

// Puts every task in `wanted` after all that it needs, out of `tasks` tasks numbered from 0. Tasks that need each
// other, directly or through others, or that need their own earlier results, form a group, in ascending order.
// Otherwise the order follows `wanted`: a task comes when its turn comes, or earlier if another one needs it. Linear in
// tasks and needs.
Schedule makeSchedule(std::size_t tasks, const std::vector<Need>& needs, const std::vector<std::size_t>& wanted);

#endif
