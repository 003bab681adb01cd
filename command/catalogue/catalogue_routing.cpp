// Catalogue: what joins, divides, delays, limits, relabels and records signals.
#include "catalogue_tables.h"

namespace kesto::tables {

using enum SeriesKind;

namespace {

const Port kIn{"inflow", Carries::same, "what arrives"};

Port passes(std::string_view name, std::string_view meaning) {
    return {name, Carries::same, meaning};
}

// A type that passes its one input on, to one or two outputs.
Type divider(std::string_view name, std::string_view tag, int code, std::string_view summary, std::vector<Port> out) {
    return {.name = name, .tag = tag, .codes = {code}, .summary = summary, .inputs = 1, .in = {kIn}, .out = out};
}

Type joining(std::string_view name, int code, std::string_view summary, Quality quality) {
    Type type = divider(name, "", code, summary, {withQuality(quality, passes("outflow", "the sum"))});
    type.inputs = kAnyInputs;
    return type;
}

Type multiplierType() {
    Type type = divider("multiplier", "ML", 34,
                        "Scales its flow by a series, and with it the potentials of all components whose first "
                        "connections lead to it.",
                        {passes("outflow", "the input times the series")});
    type.inputs = kAnyInputs;
    type.series = {ofItsOwn(SeriesKind::multiplier)};
    return type;
}

Type splitter() {
    Type type = divider("splitter", "SP", 36,
                        "Divides a flow between two outputs by a percentage, corrected by how full the stores of each "
                        "side are (splits).",
                        {passes("first", "the percentage of the flow"), passes("second", "the rest")});
    type.size = {"percentage that goes to the first output", "%"};
    return type;
}

Type delay() {
    Type type =
        divider("delay", "SL", 51, "Passes its input on after a number of steps. A loop in the network needs one.",
                {passes("outflow", "the input of so many steps ago")});
    type.size = {"steps", "-"};
    return type;
}

Type thresholdDivider() {
    Type type = divider("threshold_divider", "DV", 53,
                        "Keeps a flow up to a threshold. A negative threshold sends that percentage to the second "
                        "output; a negative size sends all on once the threshold is reached.",
                        {passes("below", "flow up to the threshold"), passes("above", "the rest")});
    type.size = {"mode: negative sends the whole flow on", "-", 0};
    type.series = {ofItsOwn(threshold)};
    return type;
}

Type thresholdSwitch() {
    Type type = divider(
        "threshold_switch", "ES", 63,
        "Sends the whole flow to the second output while the threshold series is above its size.",
        {passes("closed", "the flow while the series is not above the size"), passes("open", "the flow while it is")});
    type.size = {"level that the threshold series is compared with", "-"};
    type.series = {ofItsOwn(threshold)};
    return type;
}

Type qualitySwitch() {
    Type type = divider("quality_switch", "QS", 57,
                        "Sends a demand to its first output while the quality of its group's reservoir is below its "
                        "size, else to the second.",
                        {{"below", Carries::demand, "the demand while the quality is below the size"},
                         {"above", Carries::demand, "the demand while it is not"}});
    type.in = {{"demand", Carries::demand, "water asked for"}};
    type.size = {"quality that the reservoir's is compared with", ""};
    type.reservoirs = 1;
    return type;
}

Type qualityFromReservoir() {
    Type type = divider("quality_from_reservoir", "FC", 49,
                        "Turns a demand into a flow with the quality of its group's reservoir.",
                        {{"supply", Carries::water, "the quantity, with the reservoir's quality"},
                         {"request", Carries::demand, "the same quantity, as a demand"}});
    type.in = {{"demand", Carries::demand, "water asked for"}};
    type.reservoirs = 1;
    type.reservoirsOptional = true;
    return type;
}

Type qualitySetter() {
    Type type = divider("quality_setter", "FL", 56, "Passes a flow on with a quality given as a series.",
                        {withQuality(Quality::own, passes("outflow", "the flow with the given quality"))});
    type.series = {ofItsOwn(demand, "quality", "given_quality", "quality that it gives the flow")};
    return type;
}

Type quotaLimiter() {
    Type type = divider("quota_limiter", "MT", 64,
                        "Lets a flow pass within a daily, a monthly and a yearly allowance. Daily steps only; the "
                        "allowances count from the first step of the run.",
                        {passes("allowed", "what passes"), passes("excess", "what does not")});
    type.parameters = {{61, "daily_limit", "L", "allowance of a day"},
                       {62, "monthly_limit", "L", "allowance of a calendar month"},
                       {63, "yearly_limit", "L", "allowance of a calendar year"}};
    type.dailyOnly = true;
    return type;
}

}  // namespace

std::vector<Type> routing() {
    return {joining("junction", 30, "Adds up any number of flows, without quality.", Quality::none),
            joining("mixer", 31, "Adds up any number of flows and mixes their qualities to a whole number.",
                    Quality::mixed),
            multiplierType(),
            splitter(),
            delay(),
            divider("connector", "CN", 52, "Copies its input to both outputs: the flow is doubled, not divided.",
                    {passes("first", "a copy"), passes("second", "a copy")}),
            thresholdDivider(),
            thresholdSwitch(),
            qualitySwitch(),
            qualityFromReservoir(),
            qualitySetter(),
            quotaLimiter(),
            divider("logger", "LG", 26, "Records the signal that reaches it.", {}),
            divider("water_body", "WB", 43, "Receives water and records it: river, sea, sewer end.", {})};
}

}  // namespace kesto::tables
