#include "simulation/schedule.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

std::vector<std::size_t> upTo(std::size_t count) {
    std::vector<std::size_t> tasks(count);
    std::iota(tasks.begin(), tasks.end(), 0U);
    return tasks;
}

TEST(Schedule, AsWantedWithoutNeeds) {
    const Schedule schedule = makeSchedule(3, {}, {2, 0, 1});
    EXPECT_EQ(schedule.order, (std::vector<std::size_t>{2, 0, 1}));
    ASSERT_EQ(schedule.groups.size(), 1U);
    EXPECT_FALSE(schedule.groups[0].stepByStep);
}

TEST(Schedule, NeedsComeFirst) {
    const Schedule schedule = makeSchedule(4, {{0, 2}, {2, 3}}, upTo(4));
    EXPECT_EQ(schedule.order, (std::vector<std::size_t>{3, 2, 0, 1}));
}

TEST(Schedule, ACycleGoesStepByStepAndNothingElse) {
    // 1 needs 3, 3 needs 2, 2 needs 1; 4 needs 3; 1 needs 0.
    const Schedule schedule = makeSchedule(5, {{1, 3}, {3, 2}, {2, 1}, {4, 3}, {1, 0}}, upTo(5));
    EXPECT_EQ(schedule.order, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
    ASSERT_EQ(schedule.groups.size(), 3U);
    EXPECT_FALSE(schedule.groups[0].stepByStep);
    EXPECT_TRUE(schedule.groups[1].stepByStep);
    EXPECT_EQ(schedule.groups[1].begin, 1U);
    EXPECT_EQ(schedule.groups[1].end, 4U);
    EXPECT_FALSE(schedule.groups[2].stepByStep);
}

TEST(Schedule, OwnResultsGoStepByStep) {
    const Schedule schedule = makeSchedule(3, {{1, 1}}, upTo(3));
    ASSERT_EQ(schedule.groups.size(), 3U);
    EXPECT_TRUE(schedule.groups[1].stepByStep);
}

TEST(Schedule, LongChainsTakeNoStack) {
    constexpr std::size_t kTasks = 1000000;
    std::vector<Need> needs;
    for (std::size_t task = 0; task + 1 < kTasks; ++task)
        needs.emplace_back(task, task + 1);
    const Schedule schedule = makeSchedule(kTasks, needs, upTo(kTasks));
    EXPECT_EQ(schedule.order.front(), kTasks - 1);
    EXPECT_EQ(schedule.order.size(), kTasks);
    EXPECT_EQ(schedule.groups.size(), 1U);
}

}  // namespace
