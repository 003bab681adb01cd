#include "binarytree.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "components/lookup.h"
#include "errors.h"

namespace {

constexpr std::int32_t kUnknownType = 0;  // of an id without a row
constexpr std::int32_t kRefilledStore = 33;
constexpr std::size_t kLongestPath = 1000;

struct CompIdNodeLink {
    std::vector<std::unique_ptr<Node>> nodes;
    std::unordered_map<std::int32_t, Node*> byId;
};

CompIdNodeLink compIdNodeLink;
std::vector<PathToLeaf> pathsToLeafs;

std::unique_ptr<Node> newNode(std::int32_t compId, std::int32_t techId) {
    return std::make_unique<Node>(Node{compId, techId});
}

void addCompIdNodeLink(std::int32_t compId, std::unique_ptr<Node> node) {
    invariant(node != nullptr, "node!=NULL", "binarytree", 41);
    compIdNodeLink.byId[compId] = node.get();
    compIdNodeLink.nodes.push_back(std::move(node));
}

// Type codes by the id that a table row carries, as the float that it is.
class Types {
  public:
    Types(const ComponentRow* Net_Compnt, std::int32_t nComps) {
        for (std::int32_t i = 0; i < nComps; ++i)
            types_.try_emplace(Net_Compnt[i].id, nint(Net_Compnt[i].techid));
    }
    std::int32_t of(std::int32_t compId) const {
        const auto type = types_.find(static_cast<float>(compId));
        return type == types_.end() ? kUnknownType : type->second;
    }

  private:
    std::unordered_map<float, std::int32_t> types_;
};

Node* fetchOrMakeNode(std::int32_t compId, const Types& types) {
    if (Node* const node = BinaryTreeFetchNode(compId)) return node;
    addCompIdNodeLink(compId, newNode(compId, types.of(compId)));
    return compIdNodeLink.nodes.back().get();
}

using Stops = std::vector<PathToLeaf::Stop>;

void savePath(const Stops& stops) {
    pathsToLeafs.push_back({stops});
}

void pathsExtract(const Node* node, std::int32_t port, Stops& stops) {
    if (!node || stops.size() == kLongestPath) return;
    const bool isStart = stops.empty();
    const bool comesRound =
        std::any_of(stops.begin(), stops.end(), [&](const auto& stop) { return stop.compId == node->compId; });
    stops.push_back({node->compId, port});
    if (!node->next1 && !node->next2) {
        savePath(stops);
    } else if (node->techId == kRefilledStore && !isStart) {
        // Another store's water is traced by that store; only the way back to the start is a way of its own.
        if (comesRound) savePath(stops);
    } else {
        pathsExtract(node->next1, 1, stops);
        pathsExtract(node->next2, 2, stops);
    }
    stops.pop_back();
}

}  // namespace

void BinaryTreeBuild(const ConnectionRow* Net_Conn, const ComponentRow* Net_Compnt, std::int32_t nConns,
                     std::int32_t nComps) {
    const Types types(Net_Compnt, nComps);
    for (std::int32_t i = 0; i < nConns; ++i) {
        const ConnectionRow& connection = Net_Conn[i];
        Node* const sender = fetchOrMakeNode(connection.senderId, types);
        Node* const receiver = fetchOrMakeNode(connection.receiverId, types);
        const std::int32_t port = connection.senderPort;
        invariant(port == 1 || port == 2, "1==0", "binarytree", 125);
        (port == 1 ? sender->next1 : sender->next2) = receiver;
    }
}

Node* BinaryTreeFetchNode(std::int32_t compId) {
    const auto node = compIdNodeLink.byId.find(compId);
    return node == compIdNodeLink.byId.end() ? nullptr : node->second;
}

const std::vector<PathToLeaf>& PathsBuild(Node* startNode) {
    pathsToLeafs.clear();
    Stops stops;
    pathsExtract(startNode, 1, stops);
    return pathsToLeafs;
}

void PathsKill() {
    // An empty list assigned would keep the memory.
    pathsToLeafs = std::vector<PathToLeaf>();
}

void BinaryTreeKill() {
    compIdNodeLink = {};
}
