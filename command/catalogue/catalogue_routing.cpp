// Catalogue: what joins, divides, delays, limits, scales and records flows.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

// A type that passes its one input on, to one or two outputs.
Type divider(std::string_view name, std::string_view tag, int code, std::string_view summary, std::vector<Port> out,
             std::string_view identity) {
    return {.name = name,
            .tag = tag,
            .family = name,
            .codes = {code},
            .summary = summary,
            .in = {kArrives},
            .out = out,
            .size = kNothing,
            .parameters = kNothing,
            .series = kNothing,
            .potentials = kNothing,
            .balance = {Carries::same, identity, {}, Stored::nothing}};
}

Type joining(std::string_view name, int code, std::string_view summary, Quality quality) {
    Type type = divider(name, "", code, summary, {withQuality(quality, passes("outflow", "the sum"))},
                        "sum of inflows = outflow");
    type.family = "junctions";
    type.anyInputs = true;
    return type;
}

double scaled(const BalanceStep& s) {
    return s.in[0] * (s.given - 1);
}

Type multiplierType() {
    Type type = divider("multiplier", "ML", code::kMultiplier,
                        "Scales its flow by a series, and with it the potentials of all components whose first "
                        "connections lead to it.",
                        {passes("outflow", "the input times the series")}, "inflow x series = outflow");
    type.anyInputs = true;
    type.series = {ofItsOwn(SeriesKind::multiplier)};
    type.balance.terms = {computed(Term::added, "it scales what passes", scaled, Amounts::in1)};
    return type;
}

Type splitter() {
    Type type = divider("splitter", "SP", code::kSplitter,
                        "Divides a flow between two outputs by a percentage, corrected by how full the stores of each "
                        "side are (splits).",
                        {passes("first", "the percentage of the flow"), passes("second", "the rest")},
                        "inflow = first + second");
    type.size = Size{"percentage that goes to the first output", "%", range::kPercentage};
    return type;
}

Type delay() {
    Type type = divider(
        "delay", "SL", code::kDelay, "Passes its input on after a number of steps. A loop in the network needs one.",
        {passes("outflow", "the input of so many steps ago")}, "inflow + under way = outflow + under way'");
    type.size = Size{"steps", "-", range::kNotNegative};
    type.balance.stored = Stored::underWay;
    return type;
}

double copied(const BalanceStep& s) {
    return s.in[0] * (s.copies - 1);
}

Type connector() {
    Type type = divider("connector", "CN", code::kConnector,
                        "Copies its input to both outputs: the flow is doubled, not divided.",
                        {passes("first", "a copy"), passes("second", "a copy")}, "inflow + copy = first + second");
    type.family = "recorders";
    type.balance.terms = {computed(Term::added, "it copies what passes", copied, Amounts::in1)};
    type.balance.wiring.copies = true;
    return type;
}

Type thresholdDivider() {
    Type type =
        divider("threshold_divider", "DV", code::kThresholdDivider,
                "Keeps a flow up to a threshold. A negative threshold sends that percentage to the second "
                "output; a negative size sends all on once the threshold is reached.",
                {passes("below", "flow up to the threshold"), passes("above", "the rest")}, "inflow = below + above");
    type.family = "thresholds";
    type.size = Size{"mode: negative sends the whole flow on", "-", range::kAny, 0};
    type.series = {ofItsOwn(threshold)};
    return type;
}

Type thresholdSwitch() {
    Type type = divider(
        "threshold_switch", "ES", code::kThresholdSwitch,
        "Sends the whole flow to the second output while the threshold series is above its size.",
        {passes("closed", "the flow while the series is not above the size"), passes("open", "the flow while it is")},
        "inflow = closed + open");
    type.family = "thresholds";
    type.size = Size{"level that the threshold series is compared with", "-"};
    type.series = {ofItsOwn(threshold)};
    return type;
}

Type quotaLimiter() {
    Type type =
        divider("quota_limiter", "MT", code::kQuotaLimiter,
                "Lets a flow pass within a daily, a monthly and a yearly allowance. Daily steps only; the "
                "allowances count from the first step of the run.",
                {passes("allowed", "what passes"), passes("excess", "what does not")}, "inflow = allowed + excess");
    type.parameters = {
        {spec::kDailyLimit, "daily_limit", "L", "allowance of a day", range::kNotNegative},
        {spec::kMonthlyLimit, "monthly_limit", "L", "allowance of a calendar month", range::kNotNegative},
        {spec::kYearlyLimit, "yearly_limit", "L", "allowance of a calendar year", range::kNotNegative}};
    type.dailyOnly = true;
    return type;
}

Type recorder(std::string_view name, std::string_view tag, int code, std::string_view summary) {
    Type type = divider(name, tag, code, summary, {}, "inflow = received");
    type.family = "recorders";
    type.balance.terms = {whole(Term::ended, "what it records", Amounts::out1)};
    type.peakOf = 0;
    return type;
}

}  // namespace

std::vector<Type> routing() {
    return {joining("junction", code::kJunction, "Adds up any number of flows, without quality.", Quality::none),
            joining("mixer", code::kMixer, "Adds up any number of flows and mixes their qualities to a whole number.",
                    Quality::mixed),
            multiplierType(),
            splitter(),
            delay(),
            connector(),
            thresholdDivider(),
            thresholdSwitch(),
            quotaLimiter(),
            recorder("logger", "LG", code::kLogger, "Records the signal that reaches it."),
            recorder("water_body", "WB", code::kWaterBody, "Receives water and records it: river, sea, sewer end.")};
}

}  // namespace kesto::tables
