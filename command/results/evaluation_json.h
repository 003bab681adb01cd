// The account, the figures and the balance of a run as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "evaluation.h"

namespace kesto {

nlohmann::ordered_json accountRows(const Account& account);
nlohmann::ordered_json gapRows(const Account& account);  // components that the account has nothing of
nlohmann::ordered_json figureRows(const Figures& figures);
nlohmann::ordered_json tankRows(const Figures& figures);
nlohmann::ordered_json balanceRows(const Balance& balance);

}  // namespace kesto
