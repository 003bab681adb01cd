#include "simulation/dispatch.h"

#include <algorithm>
#include <iterator>

namespace {

// How each shape of model function takes its arguments from the step.
using Id = std::int32_t;
using Rec = AUEglobals*;
using Mult = const InstInfo*;
using Leafs = const RCVTOLEAFS*;

void invoke(void (*model)(Id, Rec), Step& s) {
    model(s.id, s.Globals);
}
void invoke(void (*model)(Id, Rec, Mult), Step& s) {
    model(s.id, s.Globals, s.Mult);
}
void invoke(void (*model)(Id, Rec, Mult, Signal), Step& s) {
    model(s.id, s.Globals, s.Mult, s.in1);
}
void invoke(void (*model)(Id, Rec, Signal), Step& s) {
    model(s.id, s.Globals, s.in1);
}
void invoke(void (*model)(Id, Rec, float), Step& s) {
    model(s.id, s.Globals, s.in1.quantity);
}
void invoke(void (*model)(Id, Rec, Signal*), Step& s) {
    model(s.id, s.Globals, &s.out1);
}
void invoke(void (*model)(Id, Rec, Signal*, Signal*), Step& s) {
    model(s.id, s.Globals, &s.out1, &s.out2);
}
void invoke(void (*model)(Id, Rec, float, Signal*), Step& s) {
    model(s.id, s.Globals, s.in1.quantity, &s.out1);
}
void invoke(void (*model)(Id, Rec, Signal, Signal*), Step& s) {
    model(s.id, s.Globals, s.in1, &s.out1);
}
void invoke(void (*model)(Id, Rec, float, Signal*, Signal*), Step& s) {
    model(s.id, s.Globals, s.in1.quantity, &s.out1, &s.out2);
}
void invoke(void (*model)(Id, Rec, Signal, Signal*, Signal*), Step& s) {
    model(s.id, s.Globals, s.in1, &s.out1, &s.out2);
}
void invoke(void (*model)(Id, Rec, Signal, Signal, Signal*, Signal*), Step& s) {
    model(s.id, s.Globals, s.in1, s.in2, &s.out1, &s.out2);
}
void invoke(void (*model)(Id, Rec, Leafs, float, Signal*), Step& s) {
    model(s.id, s.Globals, s.Receivers, s.in1.quantity, &s.out1);
}
void invoke(void (*model)(Id, Rec, Leafs, float, Signal*, Signal*), Step& s) {
    model(s.id, s.Globals, s.Receivers, s.in1.quantity, &s.out1, &s.out2);
}

template <auto Model>
void call(Step& s) {
    invoke(Model, s);
}

void passOn(Step& s) {
    CopyIn_To_Out(&s.in1, &s.out1);
}

void passOnTwice(Step& s) {
    CopyIn_To_Out(&s.in1, &s.out1);
    CopyIn_To_Out(&s.in1, &s.out2);
}

void potentialsOfSurfaceWater(Step& s) {
    Sw_Pots(s.id, s.Globals, s.in2);
}
void potentialsOfPump(Step& s) {
    Pm_Pots(s.id, s.Globals, &s.in1);
}

// Junction (30) and mixer (31) are the driver's own and stand in no row.
constexpr ComponentType kTypes[] = {
    {1, "OU", 0, call<App_Pots>, call<App_Outs>},
    {2, "OU", 0, call<App_Pots>, call<App_Outs>},
    {3, "LT", 1, call<Lt_Pots>, call<Lt_Outs>},
    {4, "OU", 0, call<App_Pots>, call<App_Outs>},
    {5, "OU", 0, call<App_Pots>, call<App_Outs>},
    {6, "OU", 0, call<App_Pots>, call<App_Outs>},
    {7, "OU", 0, call<App_Pots>, call<App_Outs>},
    {8, "OU", 0, call<App_Pots>, call<App_Outs>},
    {9, "OU", 0, call<App_Pots>, call<App_Outs>},
    {10, "OU", 0, call<App_Pots>, call<App_Outs>},
    {11, "LS", 1, call<Ls_Pots>, call<Ls_Outs>},
    {22, "CS", 1, call<Cs_Pots>, call<Cs_Outs>},
    {23, "CR", 1, call<Cr_Pots>, call<Cr_Outs>},
    {24, "CG", 1, call<Cg_Pots>, call<Cg_Outs>},
    {25, "CW", 1, call<Cw_Pots>, call<Cw_Outs>},
    {26, "LG", 1, nullptr, call<Lg_Append>},
    {27, "PL", 1, call<Pl_Pots>, call<Pl_Outs>},
    {28, "IM", 0, call<Im_Pots>, call<Im_Outs>},
    {29, "PV", 0, call<Pv_Pots>, call<Pv_Outs>},
    {32, "TN", 2, call<Tn_Pots>, call<Tn_Outs>},
    {33, "RS", 1, call<Rs_Pots>, call<Rs_Outs>},
    {34, "ML", kAnyInputs, nullptr, call<Ml_Outs>},
    {35, "GL", 1, call<Gl_Pots>, call<Gl_Outs>},
    {36, "SP", 1, nullptr, call<Sp_Outs>},
    {37, "TP", 1, call<Tp_Pots>, call<Tp_Outs>},
    {38, "GW", 1, call<Gw_Pots>, call<Gw_Outs>},
    {39, "SW", 2, potentialsOfSurfaceWater, call<Sw_Outs>},
    {40, "AQ", 1, call<Aq_Pots>, call<Aq_Outs>},
    {41, "SG", 1, call<Sg_Pots>, call<Sg_Outs>},
    {42, "DS", 1, call<Ds_Pots>, call<Ds_Outs>},
    {43, "WB", 1, nullptr, call<Wb_Append>},
    {44, "HD", 1, call<Hd_Pots>, passOn},
    {45, "IN", 0, nullptr, call<In_Outs>},
    {46, "BG", 0, call<Bg_Pots>, call<Bg_Outs>},
    {47, "WP", 1, call<Wp_Pots>, call<Wp_Outs>},
    {48, "PT", 1, call<Pt_Pots>, call<Pt_Outs>},
    {49, "FC", 1, nullptr, call<Fc_Outs>},
    {50, "DT", 1, nullptr, call<Dt_Outs>},
    {51, "SL", 1, nullptr, call<Sl_Outs>},
    {52, "CN", 1, nullptr, passOnTwice},
    {53, "DV", 1, nullptr, call<Dv_Outs>},
    {54, "RN", 0, nullptr, call<Rn_Outs>},
    {55, "PM", 1, potentialsOfPump, passOn},
    {56, "FL", 1, nullptr, call<Fl_Outs>},
    {57, "QS", 1, nullptr, call<Qs_Outs>},
    {58, "MN", 1, call<Mn_Pots>, call<Mn_Outs>},
    {59, "PA", 0, call<Pa_Pots>, nullptr},
    {60, "NR", 0, call<Nr_Pots>, nullptr},
    {61, "WN", 0, call<Wn_Pots>, nullptr},
    {62, "TH", 0, nullptr, call<Th_Outs>},
    {63, "ES", 1, nullptr, call<Es_Outs>},
    {64, "MT", 1, nullptr, call<Mt_Outs>},
};

bool comesBefore(const ComponentType& type, std::int32_t code) {
    return type.code < code;
}

}  // namespace

const ComponentType* findType(std::int32_t code) {
    const auto* const type = std::lower_bound(std::begin(kTypes), std::end(kTypes), code, comesBefore);
    return type != std::end(kTypes) && type->code == code ? type : nullptr;
}
