#include "components/splitter.cpp"

#include <gtest/gtest.h>

#include "bits_equal.h"

namespace {

void expect(SplitFlow expected, SplitFlow got) {
    EXPECT_BITS(expected.first, got.first);
    EXPECT_BITS(expected.second, got.second);
}

TEST(Splitter, Shares) {
    expect({25.0F, 75.0F}, shares(25.0F, 100.0F));
    expect({0.0F, 100.0F}, shares(-1.0F, 100.0F));
    expect({100.0F, 0.0F}, shares(101.0F, 100.0F));
    expect({kNaN, kNaN}, shares(kNaN, 100.0F));
}

// Each rule of the adjustment, for 30 : 70 and what both sides hold and can hold.
TEST(Splitter, Adjustment) {
    const SplitFlow flow{30.0F, 70.0F};
    const auto adjusted = [&](float Wp, float Cp, float Wn, float Cn) { return adjust(flow, {0.0F, Wp, Cp, Wn, Cn}); };
    expect(flow, adjusted(0, 0, 0, 0));
    expect(flow, adjusted(40, 50, 80, 90));
    expect({10, 90}, adjusted(10, 50, 95, 99));
    expect(flow, adjusted(10, 50, 80, 99));
    expect({10, 90}, adjusted(10, 50, 0, 0));
    expect({60, 40}, adjusted(61, 99, 40, 50));
    expect(flow, adjusted(60, 99, 40, 50));
    expect({60, 40}, adjusted(0, 0, 40, 50));
    expect(flow, adjusted(30, 50, 75, 80));
    expect(flow, adjusted(10, 50, 60, 70));
    expect(flow, adjusted(kNaN, 50, 60, 70));
    expect(flow, adjusted(40, 50, kNaN, 70));
    expect(flow, adjusted(kNaN, 50, kNaN, 70));
}

TEST(Splitter, AdjustmentKeepsTheWhole) {
    for (int Wp = 0; Wp < 120; Wp += 5) {
        for (int Wn = 0; Wn < 120; Wn += 5) {
            const SplitFlow got = adjust({30.0F, 70.0F}, {0, static_cast<float>(Wp), 1, static_cast<float>(Wn), 1});
            EXPECT_EQ(100.0F, got.first + got.second) << Wp << " " << Wn;
        }
    }
}

}  // namespace
