// Memory that runs out, at every allocation of a run: the run ends with the documented status and the name of what
// could not be had, nothing is left behind, and no exception leaves the library.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "bits.h"
#include "child.h"
#include "failing_memory.h"
#include "host_record.h"
#include "networks.h"
#include "random_model.h"

namespace {

struct Ending {
    long allocations = 0;
    long blocksLeft = 0;
    std::int32_t status = 0;
    std::int32_t flag = 0;
    std::string message;
    std::string outputs;
};

// The outputs as text, so that two runs can be compared.
std::string outputs(const AUEglobals& record) {
    std::string text;
    forEachResult(record, [&](const Result& result) {
        for (std::size_t k = 0; k < result.steps; ++k)
            text += written(result[k]) + " ";
    });
    return text;
}

// Runs a model in a process of its own.
Ending runWith(const Model& model, failing_memory::Plan plan) {
    const ChildResult child = runInChild([&] {
        HostRecord host(model);
        AUEglobals& record = host.record();
        failing_memory::start(plan);
        const std::int32_t status = KESTO_simul(&record, 1, model.nSteps);
        failing_memory::stop();
        const std::string put = status == KESTO_SUCCESS ? outputs(record) : "";
        FreeAUEglobals(&record);
        std::string answer;
        for (const long number :
             {failing_memory::allocations(), failing_memory::blocks(), long{status}, long{record.ErrFlag}})
            answer += std::to_string(number) + "\n";
        return answer + record.ErrMsg + "\n" + put;
    });
    EXPECT_TRUE(child.exited()) << "allocation " << plan.failAt << ": " << child.describe();
    std::vector<std::string> lines;
    std::size_t at = 0;
    for (std::size_t end; lines.size() < 5 && (end = child.answer.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(child.answer.substr(at, end - at));
    if (lines.size() < 5) return {};
    return {std::stol(lines[0]),    std::stol(lines[1]), std::stoi(lines[2]), std::stoi(lines[3]), lines[4],
            child.answer.substr(at)};
}

bool isOfMemory(const std::string& message) {
    return message.starts_with("Cannot allocate memory for ") || message == "Error in CalcSequence!";
}

// Either the run does without what was refused, and gives the same results, or it fails as documented.
void check(const Ending& ending, const Ending& undisturbed, long n) {
    EXPECT_EQ(ending.blocksLeft, 0) << "allocation " << n << ", " << ending.message;
    if (ending.status == KESTO_SUCCESS) {
        EXPECT_EQ(ending.flag, 0) << "allocation " << n;
        EXPECT_EQ(ending.outputs, undisturbed.outputs) << "allocation " << n;
    } else {
        EXPECT_EQ(ending.status, KESTO_SETUP_FAILURE) << "allocation " << n;
        EXPECT_EQ(ending.flag, 1) << "allocation " << n;
        EXPECT_TRUE(isOfMemory(ending.message)) << "allocation " << n << ": " << ending.message;
    }
}

Ending runUndisturbed(const Model& model) {
    const Ending ending = runWith(model, {});
    EXPECT_EQ(ending.status, KESTO_SUCCESS) << ending.message;
    EXPECT_EQ(ending.blocksLeft, 0);
    EXPECT_GT(ending.allocations, 20);
    return ending;
}

// One message after the other, each with how many allocations in a row end in it.
using Messages = std::vector<std::pair<std::string, int>>;

Messages refuseEach(const Model& model) {
    const Ending undisturbed = runUndisturbed(model);
    Messages messages;
    for (long n = 1; n <= undisturbed.allocations; ++n) {
        const Ending ending = runWith(model, {n, false});
        check(ending, undisturbed, n);
        if (ending.status == KESTO_SUCCESS) continue;
        if (messages.empty() || messages.back().first != ending.message) messages.emplace_back(ending.message, 0);
        ++messages.back().second;
    }
    return messages;
}

std::string noMemory(const std::string& name) {
    return "Cannot allocate memory for " + name + "!";
}

constexpr int kSome = -1;  // how many depends on the standard library's containers

Messages expectedOfEverything() {
    Messages expected = {{noMemory("CRossSignal"), 1},
                         {noMemory("CRossConnection"), 1},
                         {noMemory("CompntId"), 1},
                         {noMemory("Globals->Logs"), 1},
                         {noMemory("Globals->Logs[i].Signal"), 3},
                         {noMemory("Globals->WatBod"), 1},
                         {noMemory("Globals->WatBod[i].Signal"), 1}};
    const char* const potentials[] = {"NrgPot", "InfPot", "LosPot", "EvaPot", "CapPot", "OprPot"};
    for (const std::string name : potentials)
        expected.emplace_back(noMemory("Globals->" + name), 1);
    for (const std::string name : potentials)
        expected.emplace_back(noMemory("Globals->" + name + "[i].Value"), 2);
    expected.insert(expected.end(), {{"Error in CalcSequence!", kSome},
                                     {noMemory("CRossConnection"), kSome},
                                     {noMemory("MultIds"), 1},
                                     {noMemory("MultIds[icomp]"), kSome},
                                     {noMemory("NULL"), kSome},
                                     {noMemory("SeqId"), kSome},
                                     {noMemory("Lookups"), kSome},
                                     {noMemory("TotNumComp"), 1},
                                     {noMemory("TotNumComp[i].Value"), 3},
                                     {noMemory("compIdNodeLink"), kSome}});
    return expected;
}

TEST(Memory, EachAllocationThatFailsIsNamed) {
    const Messages messages = refuseEach(makeEverything());
    const Messages expected = expectedOfEverything();
    ASSERT_GT(messages.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(messages[i].first, expected[i].first) << "message " << i;
        if (expected[i].second != kSome) {
            EXPECT_EQ(messages[i].second, expected[i].second) << messages[i].first;
        }
    }
    // Then the receiving units, one after the other, and what is the engine's own affair.
    const std::string ofReceivers[] = {noMemory("RCVTOLEAFS"), noMemory("RCVTOLEAF"),
                                       noMemory("RCVTOLEAF[ipath].Split_id")};
    for (const std::string& name : ofReceivers) {
        EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [&](const auto& m) { return m.first == name; }))
            << name;
    }
}

TEST(Memory, EachAllocationOfRandomNetworks) {
    for (std::uint32_t seed = 1; seed <= 6; ++seed)
        EXPECT_FALSE(refuseEach(makeRandomModel({}, seededDice(seed)).model).empty()) << seed;
}

TEST(Memory, AllAllocationsFromOneOn) {
    const Model model = makeEverything();
    const Ending undisturbed = runUndisturbed(model);
    for (long n = 1; n <= undisturbed.allocations; ++n)
        check(runWith(model, {n, true}), undisturbed, n);
}

}  // namespace
