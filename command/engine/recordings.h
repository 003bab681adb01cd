// Which outputs are recorded, and how to record them without changing any result.
//
// An output is recorded by a logger connected to it. Loggers stand last in the component table: they send nothing, so
// they are placed without moving any other component, and what the engine's signal buffers carry over from one
// component to the next passes them unchanged. What a second connection could change, and how it is kept from doing so:
//
//  - the walk that finds a component's multipliers follows the first connection listed of each sender: a logger's
//    connection is never a sender's first unless it is its only one;
//  - the tree through which sources are traced keeps the last connection listed of each output: a logger's connection
//    stands before that one, between two copies of it if it is the sender's first as well;
//  - an output without receivers is a dead end of that tree, and a logger would lengthen or multiply paths: refused
//    where that could give a receiving unit another source;
//  - a delay that opens a loop releases only its first connection, so a logger behind it would never be placed: what it
//    sends is read from its own log instead;
//  - a component whose input 1 nobody feeds reads the quality that the component before it had received, and a logger
//    would be that component: nothing is recorded beside such a one.
#pragma once

#include <string>
#include <vector>

#include "model.h"

namespace kesto {

class Network;

struct Refusal {
    OutputPort output;
    std::string reason;
};

struct RecordingPlan {
    std::vector<OutputPort> logged;      // by a logger each, in this order
    std::vector<OutputPort> fromOwnLog;  // of delays
    std::vector<Refusal> refused;
    std::vector<std::pair<int, bool>> connections;  // rows in order: index of a connection, or of `logged` (true)
};

// All outputs that types set.
std::vector<OutputPort> allOutputs(const Model& model);

RecordingPlan planRecordings(const Model& model, const Network& network, const std::vector<OutputPort>& wanted);

}  // namespace kesto
