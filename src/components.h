// The component models: for each type the forms (components/model.h) that book its potentials, _Pots, and compute its
// outputs, _Outs. Families live in components/, one file each; types that share a model share its form.
#ifndef KESTO_COMPONENTS_H
#define KESTO_COMPONENTS_H

#include <cstdint>
#include <vector>

#include "AUEglobals.h"

struct Form;

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
extern const Form App_Pots, App_Outs;

// Steady-draw storage and treatment: 3, 23, 24, 25
extern const Form Lt_Pots, Lt_Outs;
extern const Form Cr_Pots, Cr_Outs;
extern const Form Cg_Pots, Cg_Outs;
extern const Form Cw_Pots, Cw_Outs;

// Links: 11, 27, 35, 41, 42
extern const Form Ls_Pots, Ls_Outs;
extern const Form Pl_Pots, Pl_Outs;
extern const Form Gl_Pots, Gl_Outs;
extern const Form Sg_Pots, Sg_Outs;
extern const Form Ds_Pots, Ds_Outs;

// Soak-away: 22
extern const Form Cs_Pots, Cs_Outs;

// Recorders and connector: 26, 43, 52. The copying also serves 44 and 55.
extern const Form Lg_Append, Wb_Append;
extern const Form CopyIn_To_Out, CopyIn_To_Outs;

// Runoff surfaces: 28, 29
extern const Form Im_Pots, Im_Outs;
extern const Form Pv_Pots, Pv_Outs;

// Tank: 32
extern const Form Tn_Pots, Tn_Outs;

// Receiving units: 33, 37
extern const Form Rs_Pots, Rs_Outs, Rs_Mixing;
extern const Form Tp_Pots, Tp_Outs;

// Scaling link: 34
extern const Form Ml_Outs;

// Splitter: 36
extern const Form Sp_Outs;

// Well: 38
extern const Form Gw_Pots, Gw_Outs;

// Surface water: 39
extern const Form Sw_Pots, Sw_Outs;

// Abstraction: 40, 47, 48
extern const Form Aq_Pots, Aq_Outs;
extern const Form Wp_Pots, Wp_Outs;
extern const Form Pt_Pots, Pt_Outs;

// Hydraulic energy: 44
extern const Form Hd_Pots;

// Demand source: 45
extern const Form In_Outs;

// Evaporating store: 46
extern const Form Bg_Pots, Bg_Outs;

// Quality: 49, 56, 57
extern const Form Fc_Outs, Fl_Outs, Qs_Outs;

// Outlet store: 50
extern const Form Dt_Outs;

// Delay: 51
extern const Form Sl_Outs;

// Thresholds: 53, 63
extern const Form Dv_Outs, Es_Outs;

// Release between two stores: 54
extern const Form Rn_Outs;

// Pump: 55
extern const Form Pm_Pots;

// Membrane treatment: 58
extern const Form Mn_Pots, Mn_Outs;

// Radiation energy: 59, 60
extern const Form Pa_Pots, Nr_Pots;

// Wind energy: 61
extern const Form Wn_Pots;

// Soil water: 62
extern const Form Th_Outs, Th_Pots;

// Quota limiter: 64
extern const Form Mt_Outs;

#endif
