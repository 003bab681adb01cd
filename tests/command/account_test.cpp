// The account of the network, on random networks of all types: it closes, and says the same whether only what it needs
// was recorded or everything.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <random>

#include "checks.h"
#include "engine_run.h"
#include "evaluation.h"
#include "model_reader.h"
#include "model_text.h"
#include "record.h"

namespace kesto {
namespace {

struct Evaluated {
    AccountNeeds needs;
    Evaluation evaluation;
};

Evaluated evaluated(const Model& model, SeriesValues& series, const std::vector<OutputPort>& asked, bool forBalance) {
    Evaluated all{needsOf(model, series, asked, forBalance), {}};
    Record record(model, series, all.needs.plan);
    const Results results = collectResults(model, record, record.shared(), all.needs.plan, runEngine(record));
    all.evaluation = evaluate(results, all.needs, series);
    return all;
}

using Totals = std::map<std::pair<bool, std::string_view>, double>;

Totals totalsOf(const Account& account) {
    Totals totals;
    for (const AccountEntry& entry : account.entries) {
        if (entry.kind != AccountKind::rounding) totals[{entry.isIn, info(entry.kind).name}] += entry.litres;
    }
    return totals;
}

double sizeOf(const Totals& totals) {
    double sum = 1;
    for (const auto& [kind, litres] : totals) {
        sum += std::abs(litres);
    }
    return sum;
}

void expectAlike(const Totals& a, const Totals& b, const std::string& text) {
    const double size = std::max(sizeOf(a), sizeOf(b));
    Totals all = a;
    all.insert(b.begin(), b.end());
    for (const Totals::value_type& one : all) {
        const auto& kind = one.first;
        const auto in = [&](const Totals& totals) { return totals.contains(kind) ? totals.at(kind) : 0; };
        EXPECT_NEAR(in(a), in(b), 1e-6 * size) << kind.second << (kind.first ? " in\n" : " out\n") << text;
    }
}

void expectClosed(const Evaluation& evaluation, const std::string& text) {
    for (const BalanceRow& row : evaluation.balance.rows) {
        EXPECT_FALSE(row.isOff()) << row.name << ": " << row[Column::error] << " L\n" << text;
    }
    const Account& account = evaluation.account;
    const double in = account.total(true), out = account.total(false);
    EXPECT_NEAR(in, out, 1e-9 * (in + out)) << text;
    for (const bool isIn : {true, false}) {
        EXPECT_EQ(account.total(isIn, AccountKind::unexplained), 0) << text;
        EXPECT_LE(account.total(isIn, AccountKind::rounding), 1e-5 * (in + out) + 1e-3) << text;
    }
}

void expectAlike(const Figures& a, const Figures& b, const std::string& text) {
    ASSERT_EQ(a.rows.size(), b.rows.size());
    for (std::size_t i = 0; i < a.rows.size(); ++i) {
        if (a.rows[i].component == kOutside) continue;  // totals of the account
        const double one = a.rows[i].value, other = b.rows[i].value;
        EXPECT_TRUE(one == other || (std::isnan(one) && std::isnan(other)))
            << a.nameOf(a.rows[i]) << ": " << one << ", " << other << "\n"
            << text;
    }
}

struct Seen {
    int runs = 0, border = 0, created = 0;
};

// Runs networks twice: with all outputs recorded, and with none but what the account needs.
Seen closeAccounts(test::Wiring wiring, int trials) {
    std::mt19937 random(20230704);
    Seen seen;
    for (int trial = 0; trial < trials && !testing::Test::HasFailure(); ++trial) {
        const std::string text = test::randomModel(random, 3 + trial % 14, wiring);
        Diagnostics diagnostics;
        const auto model = readModel(test::writeModel(text), diagnostics);
        EXPECT_TRUE(model);
        SeriesValues series(*model, diagnostics);
        checkModel(*model, series, diagnostics);
        if (diagnostics.hasErrors()) continue;
        const Evaluated all = evaluated(*model, series, allOutputs(*model), true);
        const Evaluated few = evaluated(*model, series, {}, false);
        expectClosed(all.evaluation, text);
        expectClosed(few.evaluation, text);
        ++seen.runs;
        // Some outputs can be recorded only as long as others are not.
        if (all.evaluation.account.notRecorded == few.evaluation.account.notRecorded) {
            expectAlike(totalsOf(all.evaluation.account), totalsOf(few.evaluation.account), text);
            expectAlike(all.evaluation.figures, few.evaluation.figures, text);
            seen.border += !few.needs.isWhole;
        }
        seen.created += all.evaluation.account.total(true, AccountKind::created) > 0;
    }
    std::cout << seen.runs << " networks ran, " << seen.border << " of them compared with their border alone, "
              << seen.created << " with water from nothing\n";
    return seen;
}

TEST(Account, ClosesHoweverANetworkIsWired) {
    const Seen seen = closeAccounts(test::Wiring::any, 1200);
    EXPECT_GT(seen.runs, 300);
    EXPECT_GT(seen.created, 100);
}

TEST(Account, IsTheSameFromTheBorderAlone) {
    const Seen seen = closeAccounts(test::Wiring::meant, 500);
    EXPECT_GT(seen.runs, 300);
    EXPECT_GT(seen.border, 100);
}

}  // namespace
}  // namespace kesto
