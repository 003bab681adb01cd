#include "simulation/dispatch.h"

#include <algorithm>
#include <iterator>

#include "components/type_codes.h"

namespace {

// The types that the two receiving units trace their water to.
constexpr std::array kSourcesOfReservoir{code::kTreatmentPlant, code::kServiceReservoir};
constexpr std::array kSourcesOfPlant{code::kReservoir, code::kWell};

constexpr ComponentType appliance(std::int32_t kind) {
    return {kind, "OU", 0, {&App_Pots, &App_Outs}};
}

// In ascending order of codes. Junction and mixer are the driver's own and have no row.
constexpr ComponentType kTypes[] = {
    appliance(1),
    appliance(2),
    {code::kLocalTreatment, "LT", 1, {&Lt_Pots, &Lt_Outs}},
    appliance(4),
    appliance(5),
    appliance(6),
    appliance(7),
    appliance(8),
    appliance(code::kOutdoorUse),
    appliance(code::kIndependentUse),
    {code::kInfiltrationLink, "LS", 1, {&Ls_Pots, &Ls_Outs}},
    {code::kSoakaway, "CS", 1, {&Cs_Pots, &Cs_Outs}},
    {code::kRainwaterTreatment, "CR", 1, {&Cr_Pots, &Cr_Outs}},
    {code::kGreywaterTreatment, "CG", 1, {&Cg_Pots, &Cg_Outs}},
    {code::kWastewaterTreatment, "CW", 1, {&Cw_Pots, &Cw_Outs}},
    {code::kLogger, "LG", 1, {&Lg_Append}},
    {code::kSupplyLink, "PL", 1, {&Pl_Pots, &Pl_Outs}},
    {code::kImperviousSurface, "IM", 0, {&Im_Pots, &Im_Outs}},
    {code::kPerviousSurface, "PV", 0, {&Pv_Pots, &Pv_Outs}},
    {code::kTank, "TN", 2, {&Tn_Pots, &Tn_Outs}},
    {code::kServiceReservoir, "RS", 1, {&Rs_Pots, &Rs_Outs, &Rs_Mixing}, kSourcesOfReservoir},
    {code::kMultiplier, "ML", kAnyInputs, {&Ml_Outs}},
    {code::kGravityLink, "GL", 1, {&Gl_Pots, &Gl_Outs}},
    {code::kSplitter, "SP", 1, {&Sp_Outs}},
    {code::kTreatmentPlant, "TP", 1, {&Tp_Pots, &Tp_Outs, &Tp_Mixing}, kSourcesOfPlant},
    {code::kWell, "GW", 1, {&Gw_Pots, &Gw_Outs}},
    {code::kReservoir, "SW", 2, {&Sw_Pots, &Sw_Outs}},
    {code::kAbstraction, "AQ", 1, {&Aq_Pots, &Aq_Outs}},
    {code::kSewerLink, "SG", 1, {&Sg_Pots, &Sg_Outs}},
    {code::kDrainageLink, "DS", 1, {&Ds_Pots, &Ds_Outs}},
    {code::kWaterBody, "WB", 1, {&Wb_Append}},
    {code::kHydropower, "HD", 1, {&Hd_Pots, &CopyIn_To_Out}},
    {code::kDemandSource, "IN", 0, {&In_Outs}},
    {code::kGreenArea, "BG", 0, {&Bg_Pots, &Bg_Outs}},
    {code::kTreatmentLine, "WP", 1, {&Wp_Pots, &Wp_Outs}},
    {code::kPotableTreatment, "PT", 1, {&Pt_Pots, &Pt_Outs}},
    {code::kQualityFromReservoir, "FC", 1, {&Fc_Outs}},
    {code::kDetentionBasin, "DT", 1, {&Dt_Outs}},
    {code::kDelay, "SL", 1, {&Sl_Outs}},
    {code::kConnector, "CN", 1, {&CopyIn_To_Outs}},
    {code::kThresholdDivider, "DV", 1, {&Dv_Outs}},
    {code::kPumpedStorage, "RN", 0, {&Rn_Outs}},
    {code::kPump, "PM", 1, {&Pm_Pots, &CopyIn_To_Out}},
    {code::kQualitySetter, "FL", 1, {&Fl_Outs}},
    {code::kQualitySwitch, "QS", 1, {&Qs_Outs}},
    {code::kMembrane, "MN", 1, {&Mn_Pots, &Mn_Outs}},
    {code::kSolarPanel, "PA", 0, {&Pa_Pots}},
    {code::kNetRadiation, "NR", 0, {&Nr_Pots}},
    {code::kWindTurbine, "WN", 0, {&Wn_Pots}},
    {code::kSoilStore, "TH", 0, {&Th_Outs, &Th_Pots}},
    {code::kThresholdSwitch, "ES", 1, {&Es_Outs}},
    {code::kQuotaLimiter, "MT", 1, {&Mt_Outs}},
};

constexpr bool isOrdered() {
    return std::is_sorted(std::begin(kTypes), std::end(kTypes),
                          [](const ComponentType& a, const ComponentType& b) { return a.code < b.code; });
}
static_assert(isOrdered());

bool comesBefore(const ComponentType& type, std::int32_t code) {
    return type.code < code;
}

}  // namespace

std::span<const ComponentType> componentTypes() {
    return kTypes;
}

const ComponentType* findType(std::int32_t code) {
    const auto* const type = std::lower_bound(std::begin(kTypes), std::end(kTypes), code, comesBefore);
    return type != std::end(kTypes) && type->code == code ? type : nullptr;
}
