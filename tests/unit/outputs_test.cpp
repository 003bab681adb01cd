// The output tables, as a host sees them.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "components/type_codes.h"
#include "simulation.h"

namespace {

struct Outputs : testing::Test {
    std::vector<ComponentRow> components{
        {3, code::kDelay, 0, 0, 0}, {4, code::kLogger, 0, 0, 0}, {5, code::kWaterBody, 0, 0, 0}};
    std::array<std::int32_t, 3> pots{7, 8, 7};
    AUEglobals record{};

    Outputs() {
        record.nSteps = 5;
        record.Net_Compnt = components.data();
        record.nComps = 3;
        record.PotCompIds = pots.data();
        record.nPotComps = 3;
    }
    ~Outputs() override { FreeAUEglobals(&record); }
};

TEST_F(Outputs, EachSeriesHasItsOwnZeroes) {
    AllocOuts(&record);
    ASSERT_EQ(record.ErrFlag, 0);
    ASSERT_EQ(record.nLogs, 2);
    float next = 1.0F;
    for (SeriesEntry* const table :
         {record.NrgPot, record.InfPot, record.LosPot, record.EvaPot, record.CapPot, record.OprPot}) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(table[k].id, pots[static_cast<std::size_t>(k)]);
            EXPECT_EQ(std::count(table[k].Value, table[k].Value + 5, 0.0F), 5);
            std::fill_n(table[k].Value, 5, next++);
        }
    }
    next = 1.0F;
    for (SeriesEntry* const table :
         {record.NrgPot, record.InfPot, record.LosPot, record.EvaPot, record.CapPot, record.OprPot}) {
        for (int k = 0; k < 3; ++k, ++next)
            EXPECT_EQ(std::count(table[k].Value, table[k].Value + 5, next), 5);
    }
    record.Logs[0].Signal[4] = {1.0F, 2.0F};
    EXPECT_EQ(record.Logs[1].Signal[0].quantity, 0.0F);
    EXPECT_EQ(record.WatBod[0].Signal[0].quality, 0.0F);
}

TEST_F(Outputs, WithoutStepsNoSeriesIsNull) {
    record.nSteps = 0;
    AllocOuts(&record);
    EXPECT_EQ(record.ErrFlag, 0);
    for (int k = 0; k < 3; ++k)
        EXPECT_NE(record.OprPot[k].Value, nullptr);
    EXPECT_NE(record.Logs[1].Signal, nullptr);
}

TEST_F(Outputs, WithANegativeNumberOfStepsAllSeriesAreNull) {
    record.nSteps = -3;
    AllocOuts(&record);
    EXPECT_EQ(record.ErrFlag, 1);
    EXPECT_STREQ(record.ErrMsg, "Cannot allocate memory for Globals->WatBod[i].Signal!");
    EXPECT_EQ(record.nLogs, 2);
    EXPECT_EQ(record.Logs[0].id, 4);
    EXPECT_EQ(record.Logs[1].Signal, nullptr);
    ASSERT_NE(record.OprPot, nullptr);
    EXPECT_EQ(record.OprPot[2].Value, nullptr);
    FreeAUEglobals(&record);
    EXPECT_EQ(record.Logs, nullptr);
    EXPECT_EQ(record.OprPot, nullptr);
    EXPECT_EQ(record.nLogs, 2);
}

TEST_F(Outputs, WithoutPotentialsTheTablesAreEmpty) {
    record.nPotComps = 0;
    AllocOuts(&record);
    EXPECT_EQ(record.ErrFlag, 0);
    EXPECT_NE(record.NrgPot, nullptr);
}

}  // namespace
