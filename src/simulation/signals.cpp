// The routing of signals.
//
// A connection's code is formed and taken apart as plain arithmetic, whatever its ports: port 0 counts as an input and
// delivers nothing, a sender's port other than 1 and 2 puts nothing on the connection.

#include <algorithm>
#include <new>

#include "simulation.h"

namespace {

std::int32_t connCodeOf(const ConnectionRow& connection) {
    // Wraps like the 32-bit integer that the code is.
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(connection.receiverPort) * 100U +
                                     static_cast<std::uint32_t>(connection.senderPort));
}

using Cell = CRossConnection::Cell;

// All connections between known components, the later of two between the same pair only.
void collectCells(const std::vector<std::int32_t>& CompntId, const ConnectionRow* Net_Conn, std::int32_t nConns,
                  std::vector<Cell>& cells) {
    std::unordered_map<std::int32_t, std::int32_t> positions;
    for (std::size_t k = 0; k < CompntId.size(); ++k) {
        positions.try_emplace(CompntId[k], static_cast<std::int32_t>(k));
    }
    for (std::int32_t i = 0; i < nConns; ++i) {
        const auto sender = positions.find(Net_Conn[i].senderId);
        const auto receiver = positions.find(Net_Conn[i].receiverId);
        if (sender == positions.end() || receiver == positions.end()) continue;
        cells.push_back({sender->second, receiver->second, connCodeOf(Net_Conn[i])});
    }
    const auto place = [](const Cell& cell) { return std::pair(cell.receiver, cell.sender); };
    std::stable_sort(cells.begin(), cells.end(), [&](const Cell& a, const Cell& b) { return place(a) < place(b); });
    // Backwards, so that of equal places the last one is kept; a code of 0 is no connection.
    const auto kept =
        std::unique(cells.rbegin(), cells.rend(), [&](const Cell& a, const Cell& b) { return place(a) == place(b); });
    cells.erase(cells.begin(), kept.base());
    std::erase_if(cells, [](const Cell& cell) { return cell.connCode == 0; });
}

}  // namespace

bool FormCrosConnections(const std::vector<std::int32_t>& CompntId, const ConnectionRow* Net_Conn, std::int32_t nConns,
                         CRossConnection& connections) {
    try {
        std::vector<Cell>& cells = connections.cells;
        collectCells(CompntId, Net_Conn, nConns, cells);
        connections.columnStart.assign(CompntId.size() + 1, 0);
        connections.rowStart.assign(CompntId.size() + 1, 0);
        for (const Cell& cell : cells) {
            ++connections.columnStart[static_cast<std::size_t>(cell.receiver) + 1];
            ++connections.rowStart[static_cast<std::size_t>(cell.sender) + 1];
        }
        for (std::size_t k = 0; k < CompntId.size(); ++k) {
            connections.columnStart[k + 1] += connections.columnStart[k];
            connections.rowStart[k + 1] += connections.rowStart[k];
        }
        connections.rowCells.resize(cells.size());
        std::vector<std::size_t> next = connections.rowStart;
        for (std::size_t c = 0; c < cells.size(); ++c) {
            connections.rowCells[next[static_cast<std::size_t>(cells[c].sender)]++] = c;
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

std::int32_t GetFromCrossSignal(const CRossSignal& signals, const CRossConnection& connections, std::size_t position,
                                Signal& in1, Signal& in2) {
    in1.quantity = -1.0F;
    in2.quantity = -1.0F;
    const std::size_t begin = connections.columnStart[position];
    const std::size_t end = connections.columnStart[position + 1];
    const auto count = static_cast<std::int32_t>(end - begin);
    if (count > 2) return -count;
    // From the last sender to the first: of two on one port the first is copied last and stays.
    const Signal* inputs[2] = {nullptr, nullptr};
    for (std::size_t c = end; c-- > begin;) {
        const std::int32_t slot = inputSlot(connections.cells[c].connCode);
        if (slot > 1) return -slot;
        if (slot >= 0) inputs[slot] = &signals[c];
    }
    if (inputs[0]) in1 = *inputs[0];
    if (inputs[1] && count == 2) in2 = *inputs[1];
    return count;
}

void PutInCrossSignal(CRossSignal& signals, const CRossConnection& connections, std::size_t position, Signal out1,
                      Signal out2) {
    for (std::size_t k = connections.rowStart[position]; k < connections.rowStart[position + 1]; ++k) {
        const std::size_t c = connections.rowCells[k];
        switch (outputSlot(connections.cells[c].connCode)) {
            case 0:
                signals[c] = out1;
                break;
            case 1:
                signals[c] = out2;
                break;
            default:
                break;
        }
    }
}
