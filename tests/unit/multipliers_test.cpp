#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "bits_equal.h"
#include "simulation.h"

namespace {

// 1 -> 6* -> 7* -> 4, 2 -> 7*, 3: asterisks are multipliers.
struct Multipliers : testing::Test {
    std::array<ComponentRow, 6> components{
        {{1, 30, 0, 0, 0}, {2, 30, 0, 0, 0}, {3, 30, 0, 0, 0}, {4, 30, 0, 0, 0}, {6, 34, 0, 0, 0}, {7, 34, 0, 0, 0}}};
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

}  // namespace
