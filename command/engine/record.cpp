#include "record.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

namespace kesto {

namespace {

std::int32_t count(std::size_t size) {
    return static_cast<std::int32_t>(size);
}

// Each series of the engine's tables, so far as there are any, with its place in `outputs`.
template <class Visit>
void forEach(AUEglobals& g, EngineOutputs& outputs, const Visit& visit) {
    for (std::size_t i = 0; g.Logs && i < outputs.logs.size(); ++i) {
        visit(g.Logs[i].Signal, outputs.logs[i]);
    }
    for (std::size_t i = 0; g.WatBod && i < outputs.waterBodies.size(); ++i) {
        visit(g.WatBod[i].Signal, outputs.waterBodies[i]);
    }
    const std::size_t groups = outputs.potentials.size() / kPotentials;
    SeriesEntry* const tables[] = {g.NrgPot, g.InfPot, g.LosPot, g.EvaPot, g.CapPot, g.OprPot};
    for (std::size_t i = 0; i < outputs.potentials.size(); ++i) {
        if (SeriesEntry* const table = tables[i / groups]) visit(table[i % groups].Value, outputs.potentials[i]);
    }
}

}  // namespace

Record::Record(const Model& model, SeriesValues& series, const RecordingPlan& plan)
    : model_(model),
      series_(series),
      daysBefore_(static_cast<std::size_t>(model.simulation.daysBefore())),
      steps_(static_cast<std::size_t>(model.simulation.days())) {
    fillComponents(plan);
    fillConnections(plan);
    fillSpecifications();
    listOutputs(plan);
    memory_ = std::make_unique<SharedMemory>(sharedBytes(stateNeeds().size()));
    globals_ = memory_->take<AUEglobals>(1);
    shareOutputs();
    fillGroupSeries();
    fillUses();
    fillOwnSeries();
    fillStates();
    fillSplits();
    point();
}

void Record::fillComponents(const RecordingPlan& plan) {
    for (const Component& component : model_.components) {
        const int key = component.group < 0 ? 0 : model_.groups[at(component.group)].id;
        const int brand = component.brand < 0 ? static_cast<int>(model_.brands.size()) + 1 : component.brand + 1;
        components_.push_back({static_cast<float>(component.id), static_cast<float>(component.code),
                               static_cast<float>(key), static_cast<float>(brand), static_cast<float>(component.size)});
    }
    std::map<int, bool> taken;
    for (const Component& component : model_.components) {
        taken[component.id] = true;
    }
    int next = 1000001;
    for (std::size_t i = 0; i < plan.logged.size(); ++i) {
        while (taken.contains(next))
            ++next;
        loggerIds_.push_back(next);
        components_.push_back({static_cast<float>(next++), static_cast<float>(code::kLogger), 0, 0, 0});
    }
}

void Record::fillConnections(const RecordingPlan& plan) {
    for (const auto& [index, isLogger] : plan.connections) {
        const std::int32_t link = count(connections_.size()) + 1;
        if (isLogger) {
            const OutputPort& output = plan.logged[at(index)];
            connections_.push_back(
                {link, model_.components[at(output.component)].id, output.port, loggerIds_[at(index)], 1});
            continue;
        }
        const Connection& connection = model_.connections[at(index)];
        connections_.push_back({link, model_.components[at(connection.from)].id, connection.fromPort,
                                model_.components[at(connection.to)].id, connection.toPort});
    }
}

// Brands with their own values and the standard ones of the types that use them, each ascending by number: every
// model's chained search finds them so. Components without a brand share one more, of standard values alone.
void Record::fillSpecifications() {
    std::vector<std::map<int, double>> brands(model_.brands.size() + 1);
    for (std::size_t i = 0; i < model_.brands.size(); ++i) {
        for (const auto& [number, value] : model_.brands[i].specifications) {
            brands[i][number] = value.value;
        }
    }
    for (const Component& component : model_.components) {
        std::map<int, double>& brand = component.brand < 0 ? brands.back() : brands[at(component.brand)];
        for (const Parameter& parameter : component.type->parameters) {
            if (parameter.standard) brand.emplace(parameter.number, *parameter.standard);
        }
    }
    for (std::size_t i = 0; i < brands.size(); ++i) {
        for (const auto& [number, value] : brands[i]) {
            specifications_.push_back(
                {0, 0, static_cast<float>(i + 1), 0, 1, 1, static_cast<float>(number), static_cast<float>(value), 0});
        }
    }
}

// The engine lists logs by type: loggers, delays, quota limiters, each in the order of the component table.
void Record::listOutputs(const RecordingPlan& plan) {
    for (const int code : {code::kLogger, code::kDelay, code::kQuotaLimiter}) {
        for (std::size_t i = 0; i < model_.components.size(); ++i) {
            if (model_.components[i].code == code) logs_.push_back(static_cast<int>(i));
        }
        for (std::size_t i = 0; code == code::kLogger && i < plan.logged.size(); ++i) {
            logs_.push_back(-1 - static_cast<int>(i));
        }
    }
    for (std::size_t i = 0; i < model_.components.size(); ++i) {
        if (model_.components[i].code == code::kWaterBody) waterBodies_.push_back(static_cast<int>(i));
    }
    for (std::size_t i = 0; i < model_.groups.size(); ++i) {
        if (!model_.groups[i].potentials) continue;
        potentialGroups_.push_back(static_cast<int>(i));
        potentialIds_.push_back(model_.groups[i].id);
    }
}

std::size_t Record::sharedBytes(std::size_t states) const {
    return SharedMemory::rounded(sizeof(AUEglobals)) + states * SharedMemory::rounded(length() * sizeof(float)) +
           SharedMemory::rounded(logs_.size() * steps_ * sizeof(Signal)) +
           SharedMemory::rounded(waterBodies_.size() * steps_ * sizeof(Signal)) +
           SharedMemory::rounded(kPotentials * potentialIds_.size() * steps_ * sizeof(float)) +
           3 * SharedMemory::rounded(sizeof(std::int32_t));
}

void Record::shareOutputs() {
    const auto share = [&]<class T>(std::vector<T*>& series, std::size_t count) {
        T* const begin = memory_->take<T>(count * steps_);
        for (std::size_t i = 0; i < count; ++i) {
            series.push_back(begin + i * steps_);
        }
    };
    share(shared_.logs, logs_.size());
    share(shared_.waterBodies, waterBodies_.size());
    share(shared_.potentials, kPotentials * potentialIds_.size());
    for (std::int32_t** number : {&state_.status, &state_.finished, &state_.kept}) {
        *number = memory_->take<std::int32_t>(1);
    }
}

EngineOutputs Record::own() const {
    EngineOutputs outputs = shared_;
    forEach(*globals_, outputs, [&](auto* own, auto*& output) { output = own ? own + daysBefore_ : output; });
    return outputs;
}

// What was moved is gone from the engine's tables, so that it takes memory once, and is not moved again when a signal
// stops the process meanwhile.
void Record::moveToShared(std::size_t done) {
    forEach(*globals_, shared_, [&](auto*& own, auto* output) {
        if (!own) return;
        std::memcpy(output, own + daysBefore_, done * sizeof *own);
        giveBack(std::exchange(own, nullptr), length() * sizeof *own);
    });
}

void Record::fillSplits() {
    for (const Component& component : model_.components) {
        for (const Split& split : component.splits) {
            std::vector<std::int32_t> members;
            for (const int member : split.members) {
                members.push_back(model_.components[at(member)].id);
            }
            splitMembers_.push_back(std::move(members));
            splits_.push_back({component.id, count(splitMembers_.back().size()), splitMembers_.back().data(),
                               static_cast<float>(split.beta)});
        }
    }
}

void Record::point() {
    AUEglobals& g = *globals_;
    const Simulation& simulation = model_.simulation;
    const Day first = simulation.start - simulation.daysBefore();
    const Day shift = shiftToRecord(first, simulation.end).value_or(0);
    g.StartTime = static_cast<std::int32_t>((first + shift) * 86400);
    g.nSteps = count(length());
    g.TimeStep = static_cast<float>(simulation.timeStep);
    g.Latitude = static_cast<float>(simulation.latitude.value_or(0));
    g.StopOnInfeas = simulation.stopOnInfeasible ? 1 : 0;
    g.BuildTree = simulation.traceSources ? 1 : 0;
    const auto set = [](auto*& pointer, std::int32_t& size, auto& rows) {
        pointer = rows.data();
        size = count(rows.size());
    };
    set(g.PotCompIds, g.nPotComps, potentialIds_);
    set(g.TechSpecs, g.nTechSpecs, specifications_);
    set(g.Net_Compnt, g.nComps, components_);
    set(g.Net_Conn, g.nConns, connections_);
    set(g.FreqSer, g.nFreqSer, table(SeriesKind::uses));
    set(g.Rainfall, g.nRainfall, table(SeriesKind::rainfall));
    set(g.Temp, g.nTemp, table(SeriesKind::temperature));
    set(g.Tmin, g.nTmin, table(SeriesKind::temperatureMin));
    set(g.Tmax, g.nTmax, table(SeriesKind::temperatureMax));
    set(g.Wind, g.nWind, table(SeriesKind::wind));
    set(g.Multpls, g.nMultpls, table(SeriesKind::multiplier));
    set(g.Threshold, g.nThreshold, table(SeriesKind::threshold));
    set(g.Occup, g.nOccup, table(SeriesKind::occupancy));
    set(g.Dmdflct, g.nDmdflct, table(SeriesKind::demandFluctuation));
    set(g.InsDmd, g.nInsDmd, table(SeriesKind::demand));
    set(g.WatQuant, g.nWatQuant, table(SeriesKind::storage));
    set(g.WatQual, g.nWatQual, table(SeriesKind::quality));
    set(g.Splits, g.nSplits, splits_);
}

}  // namespace kesto
