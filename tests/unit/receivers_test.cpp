// Where receiving units trace their water to, compared with a full enumeration of all paths.

#include "simulation/receivers.cpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <sstream>

namespace {

struct Network {
    std::vector<ComponentRow> components;
    std::vector<ConnectionRow> connections;

    void add(std::int32_t id, std::int32_t type) {
        components.push_back({static_cast<float>(id), static_cast<float>(type), 0, 0, 0});
    }
    void connect(std::int32_t sender, std::int32_t port, std::int32_t receiver) {
        connections.push_back({0, sender, port, receiver, 1});
    }
};

std::string describe(const Receiver& receiver) {
    std::string text = "unit " + std::to_string(receiver.id);
    for (const RCVTOLEAF& path : receiver.paths) {
        text += ", " + std::to_string(path.leaf_id) + " by";
        for (const SplitterOnPath& splitter : path.splitters)
            text += " " + std::to_string(splitter.Split_id) + ":" + std::to_string(splitter.Split_port);
    }
    return text + "\n";
}

constexpr char kAbort[] = "Assertion failed: icomp";

// The engine's table as text, or the error.
std::string trace(Network& network, std::int32_t longestPath) {
    AUEglobals record{};
    record.Net_Compnt = network.components.data();
    record.nComps = static_cast<std::int32_t>(network.components.size());
    record.Net_Conn = network.connections.data();
    record.nConns = static_cast<std::int32_t>(network.connections.size());
    const BinaryTree tree = BinaryTreeBuild(record.Net_Conn, record.Net_Compnt, record.nConns, record.nComps);
    RCVTOLEAFS table;
    const std::int32_t status = traceReceivers(&record, tree, table, longestPath);
    EXPECT_EQ(record.ErrFlag, status == KESTO_SUCCESS ? 0 : 1);
    if (status != KESTO_SUCCESS) return std::to_string(status) + " " + record.ErrMsg;
    std::string text;
    for (const Receiver& receiver : table)
        text += describe(receiver);
    return text;
}

// The same, plainly: all paths are written down, then each is searched for its leaf.
class Enumeration {
  public:
    struct TooMany {};

    Enumeration(const Network& network, std::int32_t longestPath)
        : network_(network), longest_(static_cast<std::size_t>(longestPath)) {
        for (const ConnectionRow& connection : network.connections) {
            nexts_[connection.senderId][static_cast<std::size_t>(connection.senderPort) - 1] = connection.receiverId;
            nexts_[connection.receiverId];
        }
    }

    // May throw TooMany.
    std::string trace() {
        std::string text;
        for (const ComponentRow& row : network_.components) {
            if (row.techid != code::kServiceReservoir && row.techid != code::kTreatmentPlant) continue;
            const auto id = static_cast<std::int32_t>(row.id);
            if (!nexts_.contains(id)) return "-123456789 No binary tree node for this receiver!";
            paths_.clear();
            size_ = 0;
            Path path;
            extract(path, id, 1);
            Receiver receiver{id, {}};
            const std::string error = search(row.techid == code::kServiceReservoir ? "37 33" : "39 38", receiver);
            if (!error.empty()) return error;
            text += describe(receiver);
        }
        return text;
    }

  private:
    using Path = std::vector<std::pair<std::int32_t, std::int32_t>>;  // id and port of each stop

    std::optional<std::int32_t> typeOf(std::int32_t id) const {
        for (const ComponentRow& row : network_.components) {
            if (row.id == static_cast<float>(id)) return static_cast<std::int32_t>(row.techid);
        }
        return std::nullopt;
    }

    void save(const Path& path) {
        paths_.push_back(path);
        size_ += path.size();
        if (size_ > 100000) throw TooMany();
    }

    void extract(Path& path, std::optional<std::int32_t> id, std::int32_t port) {
        if (!id || path.size() == longest_) return;
        if (++extracted_ > 50000) throw TooMany();
        const bool isStart = path.empty();
        path.emplace_back(*id, port);
        const auto next = nexts_.at(*id);
        if (!next[0] && !next[1]) {
            save(path);
        } else if (typeOf(*id) == code::kServiceReservoir && !isStart) {
            const auto comesRound = [&](const auto& stop) { return stop.first == *id; };
            if (std::any_of(path.begin(), path.end() - 1, comesRound)) save(path);
        } else {
            extract(path, next[0], 1);
            extract(path, next[1], 2);
        }
        path.pop_back();
    }

    std::string search(const std::string& leafTypes, Receiver& receiver) const {
        std::string taken;
        for (const Path& path : paths_) {
            RCVTOLEAF found;
            for (std::size_t i = 1; i < path.size(); ++i) {
                const std::int32_t id = path[i].first;
                const auto type = typeOf(id);
                if (!type) return "-123456789 techid of compid=" + std::to_string(id) + "?";
                if (*type == code::kSplitter) {
                    if (i + 1 == path.size()) return kAbort;
                    found.splitters.push_back({id, path[i + 1].second});
                } else if (leafTypes.find(std::to_string(*type)) != std::string::npos &&
                           taken.find(std::to_string(id)) == std::string::npos) {
                    taken += " " + std::to_string(id);
                    found.leaf_id = id;
                    receiver.paths.push_back(found);
                    break;
                }
            }
        }
        return "";
    }

    const Network& network_;
    const std::size_t longest_;
    std::unordered_map<std::int32_t, std::array<std::optional<std::int32_t>, 2>> nexts_;
    std::vector<Path> paths_;
    std::size_t size_ = 0;
    std::size_t extracted_ = 0;
};

class Random {
  public:
    explicit Random(unsigned seed) : numbers_(seed) {}
    std::int32_t below(std::int32_t n) { return static_cast<std::int32_t>(numbers_() % static_cast<std::uint32_t>(n)); }
    bool oneIn(std::int32_t n) { return below(n) == 0; }

    // Few ids and many digits in common, so that leaves are taken through one another.
    Network network() {
        Network network;
        const std::vector<std::int32_t> types = typesOfThisNetwork();
        std::vector<std::int32_t> ids;
        const std::int32_t n = 2 + below(12);
        const std::int32_t unknowns = oneIn(4) ? 10 : 1000000;
        for (std::int32_t i = 0; i < n; ++i) {
            const std::int32_t id = oneIn(12) ? -below(40) : oneIn(4) ? 100 + below(150) : below(60);
            if (!oneIn(unknowns))
                network.add(id, types[static_cast<std::size_t>(below(static_cast<int>(types.size())))]);
            ids.push_back(id);
        }
        // Mostly downwards in the table, so that paths part and meet again; backwards now and then, for cycles.
        const std::int32_t backwards = oneIn(2) ? 1000000 : 3 + below(12);
        const std::int32_t m = 1 + below(3 * n);
        for (std::int32_t k = 0; k < m; ++k) {
            std::int32_t from = below(n);
            std::int32_t to = below(n);
            if (from > to && !oneIn(backwards)) std::swap(from, to);
            if (from == to && !oneIn(backwards)) continue;
            network.connect(ids[static_cast<std::size_t>(from)], 1 + below(2), ids[static_cast<std::size_t>(to)]);
        }
        return network;
    }

  private:
    std::vector<std::int32_t> typesOfThisNetwork() {
        std::vector<std::int32_t> types = {33, 37, 30};
        for (const std::int32_t type : {36, 36, 36, 39, 38, 3, 7, 33, 37, 37, 52, 0}) {
            if (oneIn(2)) types.push_back(type);
        }
        return types;
    }

    std::mt19937 numbers_;
};

void print(const Network& network, std::ostream& out) {
    for (const ComponentRow& row : network.components)
        out << row.id << ": type " << row.techid << "\n";
    for (const ConnectionRow& connection : network.connections)
        out << connection.senderId << ":" << connection.senderPort << " > " << connection.receiverId << "\n";
}

struct Compared {
    int tables = 0;
    int records = 0;
    int unknown = 0;
    int aborts = 0;
};

// Compares many random networks with their full enumeration.
Compared compare(unsigned firstSeed, unsigned count, std::int32_t longestPath) {
    Compared compared;
    for (unsigned seed = firstSeed; seed < firstSeed + count; ++seed) {
        Network network = Random(seed).network();
        std::string expected;
        try {
            expected = Enumeration(network, longestPath).trace();
        } catch (const Enumeration::TooMany&) {
            continue;
        }
        std::ostringstream text;
        print(network, text);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + text.str());
        if (expected == kAbort) {
            // Each takes a process.
            if (++compared.aborts <= (longestPath == kLongestPath ? 20 : 2)) {
                EXPECT_DEATH(trace(network, longestPath), kAbort);
            }
            continue;
        }
        EXPECT_EQ(trace(network, longestPath), expected);
        ++compared.tables;
        compared.records += static_cast<int>(std::count(expected.begin(), expected.end(), ','));
        compared.unknown += expected.find("techid of") != std::string::npos;
        if (testing::Test::HasFailure()) break;
    }
    return compared;
}

TEST(ReceiversDeathTest, RandomNetworksAgainstAllPaths) {
    const Compared compared = compare(1, 12000, kLongestPath);
    EXPECT_GT(compared.tables, 6000);
    EXPECT_GT(compared.records, 5000);
    EXPECT_GT(compared.unknown, 100);
    EXPECT_GT(compared.aborts, 20);
}

TEST(ReceiversDeathTest, RandomNetworksWithShortPaths) {
    for (std::int32_t longestPath = 1; longestPath <= 14; ++longestPath) {
        const Compared compared = compare(100000U * static_cast<unsigned>(longestPath), 2000, longestPath);
        EXPECT_GT(compared.tables, 800) << longestPath;
    }
}

// A splitter, two paths and where they meet again, forty times in a row.
Network makeDiamonds(std::int32_t lastType) {
    Network network;
    std::int32_t id = 1000;
    network.add(id, code::kServiceReservoir);
    for (int i = 0; i < 40; ++i) {
        network.connect(id, 1, id + 1);
        network.add(id + 1, code::kSplitter);
        for (std::int32_t port = 1; port <= 2; ++port) {
            network.add(id + 1 + port, code::kConnector);
            network.connect(id + 1, port, id + 1 + port);
            network.connect(id + 1 + port, 1, id + 4);
        }
        network.add(id + 4, i < 39 ? code::kJunction : lastType);
        id += 4;
    }
    return network;
}

std::string timed(Network network) {
    const auto begin = std::chrono::steady_clock::now();
    std::string text = trace(network, kLongestPath);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    return text;
}

TEST(Receivers, FortyDiamonds) {
    std::string expected = "unit 1000, 1160 by";
    for (int i = 0; i < 40; ++i)
        expected += " " + std::to_string(1001 + 4 * i) + ":1";
    EXPECT_EQ(timed(makeDiamonds(code::kTreatmentPlant)), expected + "\nunit 1160\n");
}

// All paths pass a leaf, but none of them ends: another store that sends on drops them.
TEST(Receivers, FortyDiamondsThatEndNowhere) {
    Network network = makeDiamonds(code::kServiceReservoir);
    network.components[1].techid = code::kTreatmentPlant;
    network.connect(1160, 1, 5000);
    network.connect(5000, 1, 1160);
    network.add(5000, code::kJunction);
    network.components.back().techid = code::kJunction;
    EXPECT_EQ(timed(network), "unit 1000\nunit 1001\nunit 1160, 1160 by\n");
}

// Every second path takes a leaf that an earlier one has passed by.
TEST(Receivers, FortyDiamondsOfLeaves) {
    Network network = makeDiamonds(code::kTreatmentPlant);
    for (ComponentRow& row : network.components) {
        if (row.techid == code::kConnector) row.techid = code::kLocalTreatment;
    }
    const std::string text = timed(network);
    EXPECT_EQ(std::count(text.begin(), text.end(), ','), 81);
}

// Two cycles that share a component and have one path out: the paths round and round are beyond counting.
TEST(Receivers, TwoCyclesWithAPathOut) {
    Network network;
    network.add(1, code::kTreatmentPlant);
    for (const std::int32_t id : {20, 21, 22})
        network.add(id, code::kJunction);
    network.add(23, code::kReservoir);
    network.connect(1, 1, 20);
    network.connect(20, 1, 21);
    network.connect(20, 2, 22);
    network.connect(21, 1, 20);
    network.connect(21, 2, 22);
    network.connect(22, 1, 20);
    network.connect(22, 2, 23);
    EXPECT_EQ(timed(network), "unit 1, 23 by\n");
}

}  // namespace
