#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "bits_equal.h"
#include "components/type_codes.h"
#include "simulation.h"

namespace {

// 1 -> 6* -> 7* -> 4, 2 -> 7*, 3: asterisks are multipliers.
struct Multipliers : testing::Test {
    std::array<ComponentRow, 6> components{{{1, code::kJunction, 0, 0, 0},
                                            {2, code::kJunction, 0, 0, 0},
                                            {3, code::kJunction, 0, 0, 0},
                                            {4, code::kJunction, 0, 0, 0},
                                            {6, code::kMultiplier, 0, 0, 0},
                                            {7, code::kMultiplier, 0, 0, 0}}};
    std::array<ConnectionRow, 4> connections{{{0, 1, 1, 6, 1}, {0, 6, 1, 7, 1}, {0, 2, 1, 7, 2}, {0, 7, 1, 4, 1}}};
    std::array<float, 2> six{2.0F, 3.0F};
    std::array<float, 2> seven{5.0F, 0.5F};
    std::array<SeriesEntry, 2> series{{{6, six.data()}, {7, seven.data()}}};
    std::vector<std::int32_t> order{1, 2, 3, 6, 7, 4};
    AUEglobals record{};
    MultIds ids;

    Multipliers() {
        record.nSteps = 2;
        record.Net_Compnt = components.data();
        record.nComps = 6;
        record.Net_Conn = connections.data();
        record.nConns = 4;
        record.Multpls = series.data();
        record.nMultpls = 2;
    }
};

TEST_F(Multipliers, ListsAreSharedAndCombined) {
    getCompsMultipliers(&record, order, ids);
    ASSERT_EQ(record.ErrFlag, 0);
    std::vector<MultiplierList> unique;
    ASSERT_EQ(getListUniqStrings(ids, unique), 2);
    std::vector<std::int32_t> SeqId;
    ASSERT_TRUE(linkCompsUniqMultSeqs(ids, unique, SeqId));
    // Component 2 and the multiplier 6 share the list of 7 alone; 3, 7 and 4 have none.
    EXPECT_EQ(SeqId, (std::vector<std::int32_t>{0, 1, -1, 1, -1, -1}));
    std::vector<MultiplierSeries> products;
    CombineMult(&record, ids, unique, products);
    ASSERT_EQ(record.ErrFlag, 0);
    ASSERT_EQ(products.size(), 2U);
    EXPECT_EQ(products[0].Value, (std::vector<float>{10.0F, 1.5F}));
    EXPECT_EQ(products[1].Value, (std::vector<float>{5.0F, 0.5F}));
}

TEST_F(Multipliers, NoneAtAll) {
    record.nConns = 0;
    getCompsMultipliers(&record, order, ids);
    std::vector<MultiplierList> unique;
    EXPECT_EQ(getListUniqStrings(ids, unique), 0);
    EXPECT_TRUE(unique.empty());
}

TEST_F(Multipliers, MissingSeries) {
    record.nMultpls = 1;
    getCompsMultipliers(&record, order, ids);
    std::vector<MultiplierList> unique;
    getListUniqStrings(ids, unique);
    std::vector<MultiplierSeries> products;
    CombineMult(&record, ids, unique, products);
    EXPECT_EQ(record.ErrFlag, 1);
    EXPECT_STREQ(record.ErrMsg, "Series of type Multpls of component with id=7 not found!");
}

// Each component sends to one other or to none; the walks are compared with walks step by step.
TEST(MultiplierWalks, RandomNetworks) {
    std::mt19937 random(7);
    const auto below = [&](int n) { return static_cast<std::int32_t>(random() % static_cast<unsigned>(n)); };
    int rounds = 0;
    for (int number = 0; number < 400; ++number) {
        const std::int32_t n = 2 + below(10);
        const bool mayComeRound = number % 8 == 0;
        std::vector<ComponentRow> components;
        std::vector<ConnectionRow> connections;
        std::vector<std::int32_t> order;
        std::vector<std::int32_t> next(static_cast<std::size_t>(n), -1);
        for (std::int32_t i = 0; i < n; ++i) {
            components.push_back(
                {static_cast<float>(i),
                 below(2) == 0 ? static_cast<float>(code::kMultiplier) : static_cast<float>(code::kJunction), 0, 0, 0});
            order.push_back(i);
            const std::int32_t to = mayComeRound ? below(n) : i + 1 + below(n);
            if (to >= n) continue;
            next[static_cast<std::size_t>(i)] = to;
            connections.push_back({0, i, 1, to, 1});
        }
        std::shuffle(order.begin(), order.end(), random);
        AUEglobals record{};
        record.Net_Compnt = components.data();
        record.nComps = n;
        record.Net_Conn = connections.data();
        record.nConns = static_cast<std::int32_t>(connections.size());
        MultIds ids;
        getCompsMultipliers(&record, order, ids);
        ASSERT_EQ(record.ErrFlag, 0);
        for (std::size_t k = 0; k < order.size(); ++k) {
            std::vector<std::int32_t> met;
            std::int32_t at = order[k];
            for (int step = 0; step < 1000001 && next[static_cast<std::size_t>(at)] >= 0; ++step) {
                at = next[static_cast<std::size_t>(at)];
                if (components[static_cast<std::size_t>(at)].techid == static_cast<float>(code::kMultiplier))
                    met.push_back(at);
            }
            ASSERT_EQ(ids.lists[k].length, static_cast<std::int32_t>(met.size())) << number << ", " << order[k];
            if (met.empty()) continue;
            ASSERT_EQ(ids.lists[k].first, met[0]);
            for (std::size_t i = 1; i < std::min<std::size_t>(met.size(), 100); ++i)
                ASSERT_EQ(ids.next.at(met[i - 1]), met[i]);
            if (met.size() > 1000) ++rounds;
        }
    }
    EXPECT_GT(rounds, 50);
}

TEST_F(Multipliers, IdsThatAreNoNumbersAreNotSearched) {
    std::vector<ComponentRow> many(30000, {std::nanf(""), 30, 0, 0, 0});
    many.insert(many.end(), components.begin(), components.end());
    record.Net_Compnt = many.data();
    record.nComps = static_cast<std::int32_t>(many.size());
    getCompsMultipliers(&record, order, ids);
    EXPECT_EQ(record.ErrFlag, 0);
    EXPECT_EQ(ids.lists[0].length, 2);
}

}  // namespace
