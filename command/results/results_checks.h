// Impossible results: found after a run, and reported with the other warnings.
#pragma once

#include "diagnostics.h"

namespace kesto {

struct Account;
struct Balance;
struct Results;

// Recorded flows, states and potentials that are not finite, and qualities that are none.
void checkResults(const Results& results, Diagnostics& diagnostics);

// Components that create or destroy water.
void checkAccount(const Results& results, const Account& account, Diagnostics& diagnostics);

// Balances that do not close.
void checkBalance(const Results& results, const Balance& balance, Diagnostics& diagnostics);

// An error, when the run did not come to its end.
void reportFailure(const Results& results, Diagnostics& diagnostics);

}  // namespace kesto
