#include "binarytree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

// All paths, as text: "1/1 2/1 3/2 ;..." with id/port of each stop.
class AllPaths : public PathSearch {
  public:
    explicit AllPaths(const BinaryTree& tree) : PathSearch(tree, std::vector<bool>(tree.nodes.size(), true)) {}
    std::string text;

  private:
    bool found(const std::vector<Stop>& path, std::size_t at) override {
        EXPECT_EQ(at, 1U);
        for (const Stop& stop : path)
            text += std::to_string(stop.node->compId) + "/" + std::to_string(stop.port) + " ";
        text += ";";
        return true;
    }
};

struct Tree : testing::Test {
    std::vector<ComponentRow> components;
    std::vector<ConnectionRow> connections;
    BinaryTree tree;

    Tree() {
        for (int id = 1; id <= 9; ++id)
            components.push_back({static_cast<float>(id), 30.0F, 0, 0, 0});
    }
    void connect(std::int32_t sender, std::int32_t port, std::int32_t receiver) {
        connections.push_back({0, sender, port, receiver, 1});
    }
    void build() {
        tree = BinaryTreeBuild(connections.data(), components.data(), static_cast<std::int32_t>(connections.size()),
                               static_cast<std::int32_t>(components.size()));
    }
    std::string paths(std::int32_t start) const {
        AllPaths all(tree);
        EXPECT_TRUE(all.PathsBuild(BinaryTreeFetchNode(tree, start)));
        return all.text;
    }
};

TEST_F(Tree, StartWithoutSuccessors) {
    connect(1, 1, 2);
    build();
    EXPECT_EQ(paths(2), "");
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

TEST_F(Tree, AnotherReceiverOnAPathDropsIt) {
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
    EXPECT_EQ(BinaryTreeFetchNode(tree, 3), nullptr);
}

TEST_F(Tree, AnotherReceiverOnACycleIsNoEnd) {
    components[0].techid = 33.0F;
    components[1].techid = 33.0F;
    connect(1, 1, 2);
    connect(2, 1, 1);
    build();
    EXPECT_EQ(paths(1), "");
}

TEST_F(Tree, NodesKnowTheirRow) {
    components[0].techid = 0.0F;
    connect(1, 1, 99);
    build();
    const Node* const known = BinaryTreeFetchNode(tree, 1);
    ASSERT_NE(known, nullptr);
    EXPECT_TRUE(known->isKnown);
    EXPECT_EQ(known->techId, 0);
    ASSERT_NE(known->next1, nullptr);
    EXPECT_EQ(known->next1->compId, 99);
    EXPECT_FALSE(known->next1->isKnown);
    EXPECT_EQ(known->next1->techId, 0);
}

TEST_F(Tree, OfTwoRowsWithOneIdTheFirstCounts) {
    components = {{std::nanf(""), 1, 0, 0, 0}, {-0.0F, 30.4F, 0, 0, 0}, {0, 31, 0, 0, 0}};
    connect(0, 1, 7);
    build();
    EXPECT_EQ(BinaryTreeFetchNode(tree, 0)->techId, 30);
}

TEST_F(Tree, LongChains) {
    for (int i = 0; i < 999; ++i)
        connect(1000 + i, 1, 1001 + i);
    build();
    const std::string longest = paths(1000);
    EXPECT_EQ(std::count(longest.begin(), longest.end(), '/'), 1000);
    EXPECT_EQ(std::count(longest.begin(), longest.end(), ';'), 1);
    connect(1999, 1, 2000);
    build();
    EXPECT_EQ(paths(1000), "");
}

using TreeDeathTest = Tree;
TEST_F(TreeDeathTest, Port3) {
    connect(1, 3, 2);
    EXPECT_DEATH(build(), "Assertion failed: 1==0, file binarytree.cpp, line 125");
}

}  // namespace
