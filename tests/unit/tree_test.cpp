#include "binarytree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Tree : testing::Test {
    std::vector<ComponentRow> components;
    std::vector<ConnectionRow> connections;

    Tree() {
        for (int id = 1; id <= 9; ++id)
            components.push_back({static_cast<float>(id), 30.0F, 0, 0, 0});
    }
    ~Tree() override {
        PathsKill();
        BinaryTreeKill();
    }
    void connect(std::int32_t sender, std::int32_t port, std::int32_t receiver) {
        connections.push_back({0, sender, port, receiver, 1});
    }
    void build() {
        BinaryTreeBuild(connections.data(), components.data(), static_cast<std::int32_t>(connections.size()),
                        static_cast<std::int32_t>(components.size()));
    }
    // "1 2/1 3/2; ..." with id/port of each stop.
    std::string paths(std::int32_t start) {
        std::string text;
        for (const PathToLeaf& path : PathsBuild(BinaryTreeFetchNode(start))) {
            for (const auto& stop : path.stops)
                text += std::to_string(stop.compId) + "/" + std::to_string(stop.port) + " ";
            text += ";";
        }
        return text;
    }
};

TEST_F(Tree, StartWithoutSuccessors) {
    connect(1, 1, 2);
    build();
    EXPECT_EQ(paths(2), "2/1 ;");
}

TEST_F(Tree, FirstPortBeforeSecond) {
    connect(1, 2, 3);
    connect(1, 1, 2);
    connect(2, 2, 4);
    connect(2, 1, 5);
    build();
    EXPECT_EQ(paths(1), "1/1 2/1 5/1 ;1/1 2/1 4/2 ;1/1 3/2 ;");
}

TEST_F(Tree, LaterConnectionOfAPortReplaces) {
    connect(1, 1, 2);
    connect(1, 1, 3);
    build();
    EXPECT_EQ(paths(1), "1/1 3/1 ;");
}

TEST_F(Tree, CycleToTheStart) {
    components[0].techid = 33.0F;
    connect(1, 1, 2);
    connect(2, 1, 1);
    build();
    EXPECT_EQ(paths(1), "1/1 2/1 1/1 ;");
}

TEST_F(Tree, AnotherReceiverOnTheWayDropsThePath) {
    components[0].techid = 33.0F;
    components[1].techid = 32.6F;
    connect(1, 1, 2);
    connect(2, 1, 3);
    connect(1, 2, 4);
    build();
    EXPECT_EQ(paths(1), "1/1 4/2 ;");
}

TEST_F(Tree, ReceiverAtTheEndIsALeaf) {
    components[1].techid = 33.0F;
    connect(1, 1, 2);
    build();
    EXPECT_EQ(paths(1), "1/1 2/1 ;");
}

TEST_F(Tree, NoNodeWithoutConnection) {
    connect(1, 1, 2);
    build();
    EXPECT_EQ(BinaryTreeFetchNode(3), nullptr);
}

TEST_F(Tree, LongChains) {
    for (int i = 0; i < 999; ++i)
        connect(1000 + i, 1, 1001 + i);
    build();
    const auto& longest = PathsBuild(BinaryTreeFetchNode(1000));
    ASSERT_EQ(longest.size(), 1U);
    EXPECT_EQ(longest[0].stops.size(), 1000U);
    PathsKill();
    BinaryTreeKill();
    connect(1999, 1, 2000);
    build();
    EXPECT_TRUE(PathsBuild(BinaryTreeFetchNode(1000)).empty());
}

using TreeDeathTest = Tree;
TEST_F(TreeDeathTest, Port3) {
    connect(1, 3, 2);
    EXPECT_DEATH(build(), "Assertion failed: 1==0, file binarytree.cpp, line 125");
}

}  // namespace
