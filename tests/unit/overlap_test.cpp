// Arrays of the host that overlap: what is found of them, and what a run then does.

#include "simulation/overlap.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "components/type_codes.h"
#include "simulation.h"

namespace {

constexpr std::int32_t kSteps = 4;
constexpr auto kReservoirType = static_cast<float>(code::kServiceReservoir);
constexpr auto kSourceType = static_cast<float>(code::kDemandSource);

// A service reservoir (1) that a source (2) asks for water, and a second one (3) that nobody asks: S' = max(S + R - D,
// 0) with a refill R of 10. All series lie in one memory, apart at first.
struct Host {
    std::array<float, 400> memory{};
    std::vector<ComponentRow> components{{2, kSourceType, 0, 0, 100}, {1, kReservoirType, 0, 0, 1000}};
    std::vector<ConnectionRow> connections{{0, 2, 1, 1, 1}};
    std::vector<SpecificationRow> specifications{{0, 0, 0, 0, 1, 1, 12, 0, 0}, {0, 0, 0, 0, 1, 1, 52, 0.01F, 0}};
    std::vector<SeriesEntry> WatQuant{{1, at(0)}, {3, at(100)}};
    std::vector<SeriesEntry> WatQual{{1, at(110)}};
    std::vector<SeriesEntry> InsDmd{{2, at(120)}};
    std::vector<SeriesEntry> Tmin{{2, at(130)}};
    std::vector<SeriesEntry> FreqSer{{2, at(200)}};
    std::array<std::int32_t, 4> members{};
    std::vector<SplitEntry> Splits{{5, 4, members.data(), 0.0F}};
    AUEglobals record{};

    float* at(std::size_t place) { return &memory[place]; }

    // When all is in its place.
    AUEglobals& fill() {
        const auto put = [](auto& rows, auto*& pointer, std::int32_t& count) {
            pointer = rows.data();
            count = static_cast<std::int32_t>(rows.size());
        };
        record.nSteps = kSteps;
        record.TimeStep = 1.0F;
        put(components, record.Net_Compnt, record.nComps);
        put(connections, record.Net_Conn, record.nConns);
        put(specifications, record.TechSpecs, record.nTechSpecs);
        put(WatQuant, record.WatQuant, record.nWatQuant);
        put(WatQual, record.WatQual, record.nWatQual);
        put(InsDmd, record.InsDmd, record.nInsDmd);
        put(Tmin, record.Tmin, record.nTmin);
        put(FreqSer, record.FreqSer, record.nFreqSer);
        put(Splits, record.Splits, record.nSplits);
        return record;
    }

    // With the state of the reservoir (1) written.
    Overlap overlap() {
        fill();
        return overlapOfWritten(record, {{WatQuant[0].Value, 0, false}, {WatQuant[0].Value, 0, true}});
    }
};

TEST(Overlap, ArraysApart) {
    Host host;
    EXPECT_FALSE(statesLieInTables(host.fill()));
    EXPECT_EQ(host.overlap(), Overlap::None);
    host.WatQuant[0].Value = host.at(96);  // right before the next one
    EXPECT_EQ(host.overlap(), Overlap::None);
}

TEST(Overlap, OfAWrittenStateWithOtherSeries) {
    const std::pair<std::size_t, Overlap> places[] = {
        {97, Overlap::OfSeries},        {100, Overlap::OfSeries},       {103, Overlap::OfSeries},
        {104, Overlap::None},           {111, Overlap::OfSeries},       {123, Overlap::OfSeries},
        {127, Overlap::OfTemperatures}, {130, Overlap::OfTemperatures}, {133, Overlap::OfTemperatures},
        {134, Overlap::None},           {200, Overlap::OfSeries},       {243, Overlap::OfSeries},
        {244, Overlap::None},
    };
    for (const auto& [place, expected] : places) {
        Host host;
        host.WatQuant[0].Value = host.at(place);
        EXPECT_EQ(host.overlap(), expected) << place;
    }
}

// One array under two ids; and those that nobody writes may lie where they like.
TEST(Overlap, OneArrayTwice) {
    Host host;
    host.WatQuant.push_back({4, host.WatQuant[0].Value});
    EXPECT_EQ(host.overlap(), Overlap::OfSeries);
    Host unwritten;
    unwritten.WatQuant[1].Value = unwritten.WatQual[0].Value;
    unwritten.InsDmd.push_back({4, unwritten.at(130)});
    EXPECT_EQ(unwritten.overlap(), Overlap::None);
}

TEST(Overlap, OfTwoWrittenStates) {
    Host host;
    host.WatQuant[1].Value = host.at(2);
    host.fill();
    const std::vector<Notes::Access> both{{host.at(0), 0, true}, {host.at(2), 0, true}};
    EXPECT_EQ(overlapOfWritten(host.record, both), Overlap::OfSeries);
}

// Whether it is written or not, of whatever component.
TEST(Overlap, OfAnyStateWithTables) {
    const auto lies = [](auto place) {
        Host host;
        host.WatQuant[1].Value = reinterpret_cast<float*>(place(host));
        Host other;
        other.WatQual[0].Value = reinterpret_cast<float*>(place(other));
        const bool found = statesLieInTables(host.fill());
        EXPECT_EQ(statesLieInTables(other.fill()), found);
        return found;
    };
    EXPECT_TRUE(lies([](Host& host) { return &host.components[1].size; }));
    EXPECT_TRUE(lies([](Host& host) { return &host.components[0].id - 3; }));
    EXPECT_TRUE(lies([](Host& host) { return &host.specifications[1].value; }));
    EXPECT_TRUE(lies([](Host& host) { return &host.InsDmd[0]; }));
    EXPECT_TRUE(lies([](Host& host) { return &host.FreqSer[0]; }));
    EXPECT_TRUE(lies([](Host& host) { return &host.Splits[0].beta; }));
    EXPECT_TRUE(lies([](Host& host) { return &host.members[3]; }));
    EXPECT_TRUE(lies([](Host& host) { return &host.record.TimeStep; }));
    EXPECT_FALSE(lies([](Host& host) { return &host.connections[0]; }));  // which set-up alone reads
    EXPECT_FALSE(lies([](Host& host) { return host.at(300); }));
}

// What runs by turns and in blocks must both come to.
struct Ending {
    std::int32_t status;
    std::int32_t step;
    std::string message;
};

void expect(const Ending& ending, const std::function<void(Host&)>& arrange, const std::vector<float>& memory = {}) {
    for (const std::int32_t length : {kNoBlocks, 1, 2, 3, kFittingBlocks}) {
        SCOPED_TRACE("blocks of " + std::to_string(length));
        Host host;
        arrange(host);
        AUEglobals& record = host.fill();
        EXPECT_EQ(simulate(&record, 1, kSteps, length), ending.status);
        EXPECT_EQ(record.CurStep, ending.step);
        EXPECT_EQ(record.ErrMsg, ending.message);
        EXPECT_EQ(std::vector<float>(host.at(0), host.at(memory.size())), memory);
        FreeAUEglobals(&record);
    }
}

// The reservoir writes in each step what the source sends in the next.
TEST(Overlap, AStateThatIsADemand) {
    const auto arrange = [](Host& host) {
        host.InsDmd[0].Value = host.at(0);
        host.WatQuant[0].Value = host.at(1);
        for (std::size_t i = 0; i < 5; ++i)
            host.memory[i] = std::array{1.0F, 5.0F, 7.0F, 8.0F, 9.0F}[i];
    };
    expect({KESTO_SUCCESS, kSteps, ""}, arrange, {1.0F, 14.0F, 10.0F, 10.0F, 10.0F});
}

// After the first step the reservoir's type is 12, which does not exist.
TEST(Overlap, AStateThatIsItsOwnType) {
    const auto arrange = [](Host& host) {
        host.WatQuant[0].Value = &host.components[1].techid;
        host.InsDmd[0].Value[0] = kReservoirType + 10.0F - 12.0F;
    };
    expect({KESTO_RUN_FAILURE, 1, "Unrecognized component with id=1!"}, arrange);
}

// The source's id is no longer its own.
TEST(Overlap, AStateThatIsAnId) {
    const auto arrange = [](Host& host) { host.WatQuant[0].Value = &host.components[0].id; };
    expect({KESTO_RUN_FAILURE, 1, "Id not found in Net_Compnt!"}, arrange);
}

}  // namespace
