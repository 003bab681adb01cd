#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "components/type_codes.h"
#include "simulation.h"

namespace {

using Ids = std::vector<std::int32_t>;

struct Network {
    std::vector<ComponentRow> components;
    std::vector<ConnectionRow> connections;

    Network& component(float id, std::int32_t type = code::kJunction) {
        components.push_back({id, static_cast<float>(type), 0, 0, 0});
        return *this;
    }
    Network& connect(std::int32_t sender, std::int32_t receiver, std::int32_t senderPort = 1, std::int32_t port = 1) {
        connections.push_back({0, sender, senderPort, receiver, port});
        return *this;
    }
    std::int32_t order(Ids& ids) const {
        return CalcSequence(connections.data(), static_cast<std::int32_t>(connections.size()), components.data(),
                            static_cast<std::int32_t>(components.size()), ids);
    }
};

TEST(Sequence, ChainListedBackwards) {
    Ids ids;
    EXPECT_EQ(Network().component(3).component(2).component(1).connect(1, 2).connect(2, 3).order(ids), KESTO_SUCCESS);
    EXPECT_EQ(ids, (Ids{1, 2, 3}));
}

TEST(Sequence, TableOrderAmongEquals) {
    Ids ids;
    EXPECT_EQ(Network().component(9).component(4).component(7).order(ids), KESTO_SUCCESS);
    EXPECT_EQ(ids, (Ids{9, 4, 7}));
}

TEST(Sequence, PlacedInTheSamePassOrTheNext) {
    // 5 stands before its supplier and waits for the next pass, 6 stands behind it and does not.
    Ids ids;
    EXPECT_EQ(Network().component(5).component(1).component(6).component(2).connect(1, 5).connect(1, 6).order(ids),
              KESTO_SUCCESS);
    EXPECT_EQ(ids, (Ids{1, 6, 2, 5}));
}

TEST(Sequence, DelayComesFirstOfItsLoop) {
    Ids ids;
    EXPECT_EQ(Network()
                  .component(1)
                  .component(2)
                  .component(3, code::kDelay)
                  .component(4)
                  .connect(1, 2)
                  .connect(2, 3)
                  .connect(3, 1)
                  .order(ids),
              KESTO_SUCCESS);
    EXPECT_EQ(ids, (Ids{4, 3, 1, 2}));
}

TEST(Sequence, LoopWithoutDelay) {
    Ids ids;
    EXPECT_EQ(Network().component(1).component(2).connect(1, 2).connect(2, 1).order(ids), KESTO_RUN_FAILURE);
}

TEST(Sequence, NoComponents) {
    Ids ids;
    EXPECT_EQ(Network().order(ids), KESTO_SUCCESS);
    EXPECT_TRUE(ids.empty());
}

TEST(Sequence, IdsAreRoundedAndMayOccurTwice) {
    Ids ids;
    EXPECT_EQ(Network().component(5.3F).component(-2.5F).component(5).order(ids), KESTO_SUCCESS);
    EXPECT_EQ(ids, (Ids{5, -3, 5}));
}

TEST(Sequence, IdOfMinusOneNeverGetsAPlace) {
    Ids ids;
    EXPECT_EQ(Network().component(1).component(-1).order(ids), KESTO_RUN_FAILURE);
}

TEST(Sequence, NegativeNumberOfConnections) {
    Ids ids;
    const ComponentRow row{1, 30, 0, 0, 0};
    EXPECT_EQ(CalcSequence(nullptr, -1, &row, 1, ids), KESTO_SETUP_FAILURE);
}

// Many rows of one id, all of which send what that id sends.
TEST(Sequence, OneIdInManyRowsTakesNoTimeForEach) {
    Network network;
    Ids expected;
    for (int i = 0; i < 100000; ++i) {
        network.component(7).component(static_cast<float>(8 + i)).connect(7, 8 + i);
        expected.insert(expected.end(), {7, 8 + i});
    }
    Ids ids;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(network.order(ids), KESTO_SUCCESS);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    EXPECT_EQ(ids, expected);
}

TEST(SequenceDeathTest, DelayWithoutReceiver) {
    Ids ids;
    EXPECT_DEATH(Network()
                     .component(1)
                     .component(2)
                     .component(3, code::kDelay)
                     .connect(1, 2)
                     .connect(2, 1)
                     .connect(2, 3)
                     .order(ids),
                 "Assertion failed: ir!=NOTFOUND, file simulation.cpp, line 601");
}

struct Signals : testing::Test {
    Network network;
    CRossConnection connections;
    CRossSignal signals;
    Signal in1{7, 8};
    Signal in2{9, 10};

    // Components 1 to 4 in this order; every cell gets the position of its sender as quantity.
    void route() {
        ASSERT_TRUE(FormCrosConnections({1, 2, 3, 4}, network.connections.data(),
                                        static_cast<std::int32_t>(network.connections.size()), connections));
        signals.assign(connections.cells.size(), Signal{});
        for (std::size_t position = 0; position < 4; ++position) {
            const auto number = static_cast<float>(position);
            PutInCrossSignal(signals, connections, position, {number, 0.25F}, {number + 0.5F, 0.75F});
        }
    }
    std::int32_t inputs(std::size_t position) { return GetFromCrossSignal(signals, connections, position, in1, in2); }
};

TEST_F(Signals, NoInputs) {
    route();
    EXPECT_EQ(inputs(0), 0);
    EXPECT_EQ(in1.quantity, -1.0F);
    EXPECT_EQ(in1.quality, 8.0F);
    EXPECT_EQ(in2.quantity, -1.0F);
    EXPECT_EQ(in2.quality, 10.0F);
}

TEST_F(Signals, PortsOfSenderAndReceiver) {
    network.connect(2, 4, 2, 1).connect(3, 4, 1, 2);
    route();
    EXPECT_EQ(inputs(3), 2);
    EXPECT_EQ(in1.quantity, 1.5F);
    EXPECT_EQ(in1.quality, 0.75F);
    EXPECT_EQ(in2.quantity, 2.0F);
    EXPECT_EQ(in2.quality, 0.25F);
}

TEST_F(Signals, TooMany) {
    network.connect(1, 4).connect(2, 4).connect(3, 4);
    route();
    EXPECT_EQ(inputs(3), -3);
}

TEST_F(Signals, WrongPort) {
    network.connect(1, 4, 1, 3);
    route();
    EXPECT_EQ(inputs(3), -2);
}

TEST_F(Signals, OfTwoOnOnePortTheFirstSenderWins) {
    network.connect(3, 4).connect(1, 4);
    route();
    EXPECT_EQ(inputs(3), 2);
    EXPECT_EQ(in1.quantity, 0.0F);
    EXPECT_EQ(in2.quantity, -1.0F);
}

TEST_F(Signals, LaterConnectionOfAPairReplaces) {
    network.connect(1, 4, 1, 2).connect(1, 4, 2, 1);
    route();
    ASSERT_EQ(connections.cells.size(), 1U);
    EXPECT_EQ(connections.cells[0].connCode, 102);
}

TEST_F(Signals, UnknownReceiversAreLeftOut) {
    network.connect(1, 99).connect(99, 2);
    route();
    EXPECT_TRUE(connections.cells.empty());
}

}  // namespace
