// The component models: for each type a function that books its potentials (_Pots), a function that computes its
// outputs (_Outs), or both. The driver calls them once a step, in this order. Families live in components/, one file
// each; types that share a model are one-line forwards.
//
// A model that fails has written ErrMsg and set ErrFlag; its outputs and the potentials not yet booked stay untouched.
#ifndef KESTO_COMPONENTS_H
#define KESTO_COMPONENTS_H

#include <cstdint>
#include <vector>

#include "AUEglobals.h"

// The product of all multipliers downstream of some components.
struct MultiplierSeries {
    std::int32_t index;
    std::vector<float> Value;  // one factor a step
};

// What the models that are scaled by multipliers need of the run.
struct InstInfo {
    std::vector<MultiplierSeries> TotNumComp;
    std::vector<std::int32_t> SeqId;     // by position: index of the component's product in TotNumComp, -1 without one
    std::vector<std::int32_t> CompntId;  // component ids in the order of calculation

    // Without any product SeqId says nothing.
    std::size_t nUniq() const { return TotNumComp.size(); }
};

// A splitter on the way of a receiving unit's water, and the output through which the way leaves it.
struct SplitterOnPath {
    std::int32_t Split_id;
    std::int32_t Split_port;
};

// One way from a receiving unit to the leaf that it is traced to.
struct RCVTOLEAF {
    std::int32_t leaf_id = 0;               // 0: none
    std::vector<SplitterOnPath> splitters;  // those before the leaf, in path order; empty without a leaf
};

// All ways of one receiving unit.
struct Receiver {
    std::int32_t id;
    std::vector<RCVTOLEAF> paths;
};

using RCVTOLEAFS = std::vector<Receiver>;

// Appliances: 1, 2, 4 ... 10
void App_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void App_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1, Signal* out2);

// Steady-draw storage and treatment: 3, 23, 24, 25
void Lt_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Lt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);
void Cr_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Cr_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);
void Cg_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Cg_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);
void Cw_Pots(std::int32_t id, AUEglobals* Globals, Signal in1);
void Cw_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);

// Links: 11, 27, 35, 41, 42
void Ls_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Ls_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);
void Pl_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Pl_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);
void Gl_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Gl_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);
void Sg_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Sg_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);
void Ds_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Ds_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);

// Soak-away: 22
void Cs_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Cs_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);

// Recorders and connector: 26, 43, 52
void Lg_Append(std::int32_t id, AUEglobals* Globals, Signal signal);
void Wb_Append(std::int32_t id, AUEglobals* Globals, Signal signal);
void CopyIn_To_Out(const Signal* source, Signal* target);

// Runoff surfaces: 28, 29
void Im_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Im_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1);
void Pv_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Pv_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1);

// Tank: 32
void Tn_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult, Signal in1);
void Tn_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal in2, Signal* out1, Signal* out2);

// Receiving units: 33, 37
void Rs_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Rs_Outs(std::int32_t id, AUEglobals* Globals, const RCVTOLEAFS* Receivers, float demand, Signal* out1);
void Tp_Pots(std::int32_t id, AUEglobals* Globals, float demand);
void Tp_Outs(std::int32_t id, AUEglobals* Globals, const RCVTOLEAFS* Receivers, float demand, Signal* out1,
             Signal* out2);

// Scaling link: 34
void Ml_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);

// Splitter: 36
void Sp_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);

// Well: 38
void Gw_Pots(std::int32_t id, AUEglobals* Globals, Signal in1);
void Gw_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);

// Surface water: 39
void Sw_Pots(std::int32_t id, AUEglobals* Globals, Signal in2);
void Sw_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal in2, Signal* out1, Signal* out2);

// Abstraction: 40, 47, 48
void Aq_Pots(std::int32_t id, AUEglobals* Globals, Signal in1);
void Aq_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);
void Wp_Pots(std::int32_t id, AUEglobals* Globals, Signal in1);
void Wp_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);
void Pt_Pots(std::int32_t id, AUEglobals* Globals, Signal in1);
void Pt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);

// Hydraulic energy: 44
void Hd_Pots(std::int32_t id, AUEglobals* Globals, Signal in1);

// Demand source: 45
void In_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1);

// Evaporating store: 46
void Bg_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Bg_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1, Signal* out2);

// Quality: 49, 56, 57
void Fc_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);
void Fl_Outs(std::int32_t id, AUEglobals* Globals, float quantity, Signal* out1);
void Qs_Outs(std::int32_t id, AUEglobals* Globals, float quantity, Signal* out1, Signal* out2);

// Outlet store: 50
void Dt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);

// Delay: 51
void Sl_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1);

// Thresholds: 53, 63
void Dv_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);
void Es_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);

// Release between two stores: 54
void Rn_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1, Signal* out2);

// Pump: 55
void Pm_Pots(std::int32_t id, AUEglobals* Globals, Signal* in1);

// Membrane treatment: 58
void Mn_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Mn_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);

// Radiation energy: 59, 60
void Pa_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);
void Nr_Pots(std::int32_t id, AUEglobals* Globals, const InstInfo* Mult);

// Wind energy: 61
void Wn_Pots(std::int32_t id, AUEglobals* Globals);

// Soil water: 62
void Th_Outs(std::int32_t id, AUEglobals* Globals, Signal* out1);

// Quota limiter: 64
void Mt_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1, Signal* out2);

#endif
