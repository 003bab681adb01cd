// What a host sees of a run, in a form that can be compared.
#ifndef KESTO_TESTS_OUTCOME_H
#define KESTO_TESTS_OUTCOME_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host_record.h"
#include "model.h"

// Values by name ("Logs quantity 1000007"), and what the calls returned; floats written to the bit.
struct Outcome {
    std::map<std::string, std::vector<std::string>> values;
    std::string ending;  // status, ErrFlag, ErrMsg, CurStep, damage of each call
    bool operator==(const Outcome&) const = default;
};

// How an id is called in an outcome.
using Naming = std::function<std::string(std::int32_t)>;

struct Call {
    std::int32_t first;
    std::int32_t last;
    bool restoreStates = false;  // the host puts its state series back before the call
};

// The calls one after the other in one fresh process, each followed by FreeAUEglobals, and the outcome of each.
std::vector<Outcome> outcomes(const Model& model, const std::vector<Call>& calls, const Naming& naming = nullptr);

// All steps in one call.
Outcome outcome(const Model& model, const Naming& naming = nullptr);

// The first few differences, for a person.
std::string difference(const Outcome& a, const Outcome& b);

#endif
