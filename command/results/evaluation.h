// What is made of a run's recordings: its account, its figures and its balance.
#pragma once

#include "account.h"
#include "balance.h"
#include "figures.h"
#include "overview.h"

namespace kesto {

struct Evaluation {
    Account account;
    Figures figures;
    Balance balance;
    NetworkCosts costs;
    std::optional<Overview> overview;  // where it is asked for
    bool showsBalance = false;         // in files and summaries
};

struct EvaluationOptions {
    const NetworkCosts* baseline = nullptr;  // of the run that this one is compared with; null: there is none
    const std::vector<OutputPort>* kept =
        nullptr;  // outputs that the files hold, for the overview; null: there is none
    bool hasFiguresOfComponents = true;
};

// `results` must hold what the account needs, as far as it can be recorded.
Evaluation evaluate(const Results& results, const AccountNeeds& needs, SeriesValues& series,
                    const EvaluationOptions& options = {});

}  // namespace kesto
