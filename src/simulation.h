// The simulation core: the whole run, the stages of set-up in the order in which the driver runs them, and the routing
// of signals within the time loop. Statuses are those of KESTO_simul.
#ifndef KESTO_SIMULATION_H
#define KESTO_SIMULATION_H

#include <compare>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "AUEglobals.h"
#include "components.h"

struct BinaryTree;

// The driver (simulation/driver.cpp)

// What KESTO_simul does. Tests choose how many steps a block has: 1 or more, as many as suit the network, or no blocks,
// so that each step goes by turns; results are the same.
inline constexpr std::int32_t kFittingBlocks = 0;
inline constexpr std::int32_t kNoBlocks = -1;
std::int32_t simulate(AUEglobals* Globals, std::int32_t first, std::int32_t last,
                      std::int32_t blockLength = kFittingBlocks);

// Output tables (simulation/outputs.cpp)

// Allocates the eight output tables, all zero. Reports failures through ErrFlag alone.
void AllocOuts(AUEglobals* Globals);

// Calculation sequence (simulation/sequence.cpp)

// The order of evaluation: each component after all that feed it, table order among equals, cycles cut at delays.
// Returns KESTO_RUN_FAILURE when there is no such order, KESTO_SETUP_FAILURE when memory is short.
std::int32_t CalcSequence(const ConnectionRow* Net_Conn, std::int32_t nConns, const ComponentRow* Net_Compnt,
                          std::int32_t nComps, std::vector<std::int32_t>& CompntId);

// Signals between components (simulation/signals.cpp)

// The connections of the calculation sequence: in meaning an n x n matrix of codes, sender's position by receiver's
// position, of which only the cells that carry a connection are kept. Each pair of components has at most one.
struct CRossConnection {
    struct Cell {
        std::int32_t sender;
        std::int32_t receiver;
        std::int32_t connCode;  // receiverPort * 100 + senderPort
    };
    std::vector<Cell> cells;               // column by column, from the first sender to the last
    std::vector<std::size_t> columnStart;  // of each receiver in `cells`; one more at the end
    std::vector<std::size_t> rowCells;     // indices into `cells`, row by row
    std::vector<std::size_t> rowStart;     // of each sender in `rowCells`; one more at the end
};

// The ports in a code: 0 for port 1, 1 for port 2.
inline std::int32_t inputSlot(std::int32_t connCode) {
    return connCode / 100 - 1;
}
inline std::int32_t outputSlot(std::int32_t connCode) {
    return connCode - 100 * (connCode / 100) - 1;
}

// The last signal that was put on each connection, in the order of CRossConnection's cells.
using CRossSignal = std::vector<Signal>;

// Fills the connections. A connection to an unknown component is left out. False when memory is short.
bool FormCrosConnections(const std::vector<std::int32_t>& CompntId, const ConnectionRow* Net_Conn, std::int32_t nConns,
                         CRossConnection& connections);

// Collects the inputs of the component at a position. Returns their number, minus their number when they are more than
// two, or 1 minus the port when an input has a port above 2.
std::int32_t GetFromCrossSignal(const CRossSignal& signals, const CRossConnection& connections, std::size_t position,
                                Signal& in1, Signal& in2);

// Sends the outputs of the component at a position to its receivers.
void PutInCrossSignal(CRossSignal& signals, const CRossConnection& connections, std::size_t position, Signal out1,
                      Signal out2);

// Multipliers (simulation/multiplier_series.cpp)

// The multipliers that a component meets downstream, along the first listed connection of each component: where the
// list begins and how many it has. The first one settles all that follow. Equal lists are the same product.
struct MultiplierList {
    std::int32_t first = 0;
    std::int32_t length = 0;
    auto operator<=>(const MultiplierList&) const = default;
};

// The multiplier that comes after each multiplier.
using NextMultiplier = std::unordered_map<std::int32_t, std::int32_t>;

struct MultIds {
    std::vector<MultiplierList> lists;  // by position
    NextMultiplier next;
};

void getCompsMultipliers(AUEglobals* Globals, const std::vector<std::int32_t>& CompntId, MultIds& multIds);

// The distinct lists in order of first occurrence. Returns their number, or KESTO_RUN_FAILURE when memory is short.
std::int32_t getListUniqStrings(const MultIds& multIds, std::vector<MultiplierList>& unique);

// For each position the index of its list among the distinct ones, -1 without multipliers. False: memory is short.
bool linkCompsUniqMultSeqs(const MultIds& multIds, const std::vector<MultiplierList>& unique,
                           std::vector<std::int32_t>& SeqId);

// The product of each distinct list, step by step.
void CombineMult(AUEglobals* Globals, const MultIds& multIds, const std::vector<MultiplierList>& unique,
                 std::vector<MultiplierSeries>& TotNumComp);

// Receiving units (simulation/receivers.cpp)

// For each receiving unit the leaves that its water is traced to and the splitters on the paths to them.
std::int32_t getReceiversLeafsSplitters(AUEglobals* Globals, const BinaryTree& tree, RCVTOLEAFS& table);

#endif
