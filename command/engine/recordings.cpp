#include "recordings.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "network.h"

namespace kesto {

namespace {

// The paths of the tree are cut at 1000 components; below this size none can reach that length.
constexpr std::size_t kSafePathLength = 990;

class Planner {
  public:
    Planner(const Model& model, const Network& network) : model_(model), network_(network) {
        if (model.simulation.traceSources) traced_ = network.tracedFromReceivers();
        unfed_ = findUnfed();
    }

    RecordingPlan plan(const std::vector<OutputPort>& wanted) {
        for (const OutputPort& output : wanted) {
            const std::string reason = refusal(output);
            if (!reason.empty()) {
                plan_.refused.push_back({output, reason});
            } else if (model_.components[at(output.component)].code == code::kDelay) {
                plan_.fromOwnLog.push_back(output);
            } else {
                plan_.logged.push_back(output);
            }
        }
        listConnections();
        return std::move(plan_);
    }

  private:
    bool isReceiver(int component) const {
        const int code = model_.components[at(component)].code;
        return code == code::kServiceReservoir || code == code::kTreatmentPlant;
    }

    // A component that reads its input 1 though nothing is connected to it; -1: none.
    int findUnfed() const {
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            const Component& component = model_.components[i];
            if (component.type->inputs() == 0 || component.code == code::kJunction || component.code == code::kMixer) {
                continue;
            }
            const std::vector<int> inputs = network_.inputs(static_cast<int>(i));
            const bool fed = std::any_of(inputs.begin(), inputs.end(), [&](int connection) {
                return model_.connections[at(connection)].toPort == 1;
            });
            if (!fed) return static_cast<int>(i);
        }
        return -1;
    }

    // Why an output cannot be recorded unchanged; empty when it can.
    std::string refusal(const OutputPort& output) {
        const Component& sender = model_.components[at(output.component)];
        if (sender.code == code::kDelay) return {};
        if (unfed_ >= 0) {
            return fmt::format("nothing is connected to input 1 of \"{}\", whose result would change",
                               model_.components[at(unfed_)].name);
        }
        if (traced_.empty() || !traced_[at(output.component)]) return {};
        const std::vector<int>& outgoing = network_.outgoing(output.component);
        const bool isConnected = std::any_of(outgoing.begin(), outgoing.end(), [&](int connection) {
            return model_.connections[at(connection)].fromPort == output.port;
        });
        if (isConnected) return {};
        if (!outgoing.empty()) {
            return "sources are traced through the component, and a logger on an unused output would add a path; "
                   "connect the output to something";
        }
        const bool mayEnd = sender.code != code::kSplitter && sender.code != code::kServiceReservoir &&
                            model_.components.size() < kSafePathLength && ended_.insert(output.component).second;
        if (mayEnd) return {};
        return "sources are traced to the component, where a path ends that a logger would lengthen; connect the "
               "output "
               "to something";
    }

    void listConnections() {
        std::map<int, std::vector<int>> before, between;  // connection -> loggers
        std::vector<int> atEnd;
        for (std::size_t i = 0; i < plan_.logged.size(); ++i) {
            const OutputPort& output = plan_.logged[i];
            const std::vector<int>& outgoing = network_.outgoing(output.component);
            int last = -1;
            for (const int connection : outgoing) {
                if (model_.connections[at(connection)].fromPort == output.port) last = connection;
            }
            const int logger = static_cast<int>(i);
            if (last < 0 || traced_.empty()) {
                atEnd.push_back(logger);
            } else if (last == outgoing.front()) {
                between[last].push_back(logger);
            } else {
                before[last].push_back(logger);
            }
        }
        for (std::size_t i = 0; i < model_.connections.size(); ++i) {
            const int connection = static_cast<int>(i);
            addLoggers(before[connection]);
            plan_.connections.emplace_back(connection, false);
            if (between[connection].empty()) continue;
            addLoggers(between[connection]);
            plan_.connections.emplace_back(connection, false);
        }
        addLoggers(atEnd);
    }

    void addLoggers(const std::vector<int>& loggers) {
        for (const int logger : loggers) {
            plan_.connections.emplace_back(logger, true);
        }
    }

    const Model& model_;
    const Network& network_;
    std::vector<bool> traced_;  // empty: sources are not traced
    int unfed_ = -1;
    std::set<int> ended_;  // components at the end of a path that have got a logger
    RecordingPlan plan_;
};

}  // namespace

std::vector<OutputPort> allOutputs(const Model& model) {
    std::vector<OutputPort> outputs;
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        const int ports = static_cast<int>(model.components[i].type->out.size());
        for (int port = 1; port <= ports; ++port) {
            outputs.push_back({static_cast<int>(i), port});
        }
    }
    return outputs;
}

RecordingPlan planRecordings(const Model& model, const Network& network, const std::vector<OutputPort>& wanted) {
    return Planner(model, network).plan(wanted);
}

}  // namespace kesto
