#include "simulation/lifetimes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

TEST(Lifetimes, ApartInTimeTogetherInPlace) {
    const Places places = sharePlaces({{0, 1}, {1, 2}, {2, 3}, {3, 3}});
    EXPECT_EQ(places.count, 2U);
    EXPECT_NE(places.of[0], places.of[1]);
    EXPECT_EQ(places.of[0], places.of[2]);
    EXPECT_EQ(places.of[1], places.of[3]);
}

TEST(Lifetimes, TheLastThatBecameFreeIsTakenFirst) {
    const Places places = sharePlaces({{0, 1}, {0, 2}, {5, 6}});
    EXPECT_EQ(places.of[2], places.of[1]);
}

TEST(Lifetimes, UnusedArraysTakeNoPlace) {
    EXPECT_EQ(sharePlaces({Lifetime{}, {4, 4}, Lifetime{}}).count, 1U);
    EXPECT_EQ(sharePlaces({}).count, 1U);
}

// As many places as are needed at once at some moment, and no two at once in one.
TEST(Lifetimes, AtRandom) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        std::vector<Lifetime> lifetimes(random() % 60);
        for (Lifetime& lifetime : lifetimes) {
            lifetime.first = random() % 50;
            lifetime.last = lifetime.first + random() % 20;
        }
        const Places places = sharePlaces(lifetimes);
        std::size_t most = 0;
        for (std::size_t moment = 0; moment < 70; ++moment) {
            std::vector<bool> taken(places.count, false);
            std::size_t atOnce = 0;
            for (std::size_t i = 0; i < lifetimes.size(); ++i) {
                if (moment < lifetimes[i].first || moment > lifetimes[i].last) continue;
                ASSERT_FALSE(taken[places.of[i]]);
                taken[places.of[i]] = true;
                ++atOnce;
            }
            most = std::max(most, atOnce);
        }
        EXPECT_EQ(places.count, std::max<std::size_t>(most, 1));
    }
}

}  // namespace
