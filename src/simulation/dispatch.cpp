#include "simulation/dispatch.h"

#include <algorithm>
#include <iterator>

namespace {

// Junction (30) and mixer (31) are the driver's own and stand in no row.
constexpr ComponentType kTypes[] = {
    {1, "OU", 0, {&App_Pots, &App_Outs}},
    {2, "OU", 0, {&App_Pots, &App_Outs}},
    {3, "LT", 1, {&Lt_Pots, &Lt_Outs}},
    {4, "OU", 0, {&App_Pots, &App_Outs}},
    {5, "OU", 0, {&App_Pots, &App_Outs}},
    {6, "OU", 0, {&App_Pots, &App_Outs}},
    {7, "OU", 0, {&App_Pots, &App_Outs}},
    {8, "OU", 0, {&App_Pots, &App_Outs}},
    {9, "OU", 0, {&App_Pots, &App_Outs}},
    {10, "OU", 0, {&App_Pots, &App_Outs}},
    {11, "LS", 1, {&Ls_Pots, &Ls_Outs}},
    {22, "CS", 1, {&Cs_Pots, &Cs_Outs}},
    {23, "CR", 1, {&Cr_Pots, &Cr_Outs}},
    {24, "CG", 1, {&Cg_Pots, &Cg_Outs}},
    {25, "CW", 1, {&Cw_Pots, &Cw_Outs}},
    {26, "LG", 1, {&Lg_Append}},
    {27, "PL", 1, {&Pl_Pots, &Pl_Outs}},
    {28, "IM", 0, {&Im_Pots, &Im_Outs}},
    {29, "PV", 0, {&Pv_Pots, &Pv_Outs}},
    {32, "TN", 2, {&Tn_Pots, &Tn_Outs}},
    {33, "RS", 1, {&Rs_Pots, &Rs_Outs, &Rs_Mixing}},
    {34, "ML", kAnyInputs, {&Ml_Outs}},
    {35, "GL", 1, {&Gl_Pots, &Gl_Outs}},
    {36, "SP", 1, {&Sp_Outs}},
    {37, "TP", 1, {&Tp_Pots, &Tp_Outs}},
    {38, "GW", 1, {&Gw_Pots, &Gw_Outs}},
    {39, "SW", 2, {&Sw_Pots, &Sw_Outs}},
    {40, "AQ", 1, {&Aq_Pots, &Aq_Outs}},
    {41, "SG", 1, {&Sg_Pots, &Sg_Outs}},
    {42, "DS", 1, {&Ds_Pots, &Ds_Outs}},
    {43, "WB", 1, {&Wb_Append}},
    {44, "HD", 1, {&Hd_Pots, &CopyIn_To_Out}},
    {45, "IN", 0, {&In_Outs}},
    {46, "BG", 0, {&Bg_Pots, &Bg_Outs}},
    {47, "WP", 1, {&Wp_Pots, &Wp_Outs}},
    {48, "PT", 1, {&Pt_Pots, &Pt_Outs}},
    {49, "FC", 1, {&Fc_Outs}},
    {50, "DT", 1, {&Dt_Outs}},
    {51, "SL", 1, {&Sl_Outs}},
    {52, "CN", 1, {&CopyIn_To_Outs}},
    {53, "DV", 1, {&Dv_Outs}},
    {54, "RN", 0, {&Rn_Outs}},
    {55, "PM", 1, {&Pm_Pots, &CopyIn_To_Out}},
    {56, "FL", 1, {&Fl_Outs}},
    {57, "QS", 1, {&Qs_Outs}},
    {58, "MN", 1, {&Mn_Pots, &Mn_Outs}},
    {59, "PA", 0, {&Pa_Pots}},
    {60, "NR", 0, {&Nr_Pots}},
    {61, "WN", 0, {&Wn_Pots}},
    {62, "TH", 0, {&Th_Outs, &Th_Pots}},
    {63, "ES", 1, {&Es_Outs}},
    {64, "MT", 1, {&Mt_Outs}},
};

bool comesBefore(const ComponentType& type, std::int32_t code) {
    return type.code < code;
}

}  // namespace

const ComponentType* findType(std::int32_t code) {
    const auto* const type = std::lower_bound(std::begin(kTypes), std::end(kTypes), code, comesBefore);
    return type != std::end(kTypes) && type->code == code ? type : nullptr;
}
