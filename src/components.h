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

// A splitter on a path of a receiving unit, and the output through which the path leaves it.
struct SplitterOnPath {
    std::int32_t Split_id;
    std::int32_t Split_port;
};

// One path from a receiving unit to the leaf that it is traced to.
struct RCVTOLEAF {
    std::int32_t leaf_id = 0;               // 0: a leaf that adds nothing
    std::vector<SplitterOnPath> splitters;  // those before the leaf, in path order
};

// All paths of one receiving unit.
struct Receiver {
    std::int32_t id;
    std::vector<RCVTOLEAF> paths;
};

using RCVTOLEAFS = std::vector<Receiver>;

// Appliances
extern const Form App_Pots, App_Outs;

// Treatment stages: local, rainwater, greywater, wastewater treatment
extern const Form Lt_Pots, Lt_Outs;
extern const Form Cr_Pots, Cr_Outs;
extern const Form Cg_Pots, Cg_Outs;
extern const Form Cw_Pots, Cw_Outs;

// Links: infiltration, supply, gravity, sewer, drainage link
extern const Form Ls_Pots, Ls_Outs;
extern const Form Pl_Pots, Pl_Outs;
extern const Form Gl_Pots, Gl_Outs;
extern const Form Sg_Pots, Sg_Outs;
extern const Form Ds_Pots, Ds_Outs;

// Soak-away
extern const Form Cs_Pots, Cs_Outs;

// Recorders: logger, water body. Connector: the copying also serves hydropower and pump.
extern const Form Lg_Append, Wb_Append;
extern const Form CopyIn_To_Out, CopyIn_To_Outs;

// Runoff surfaces: impervious, pervious
extern const Form Im_Pots, Im_Outs;
extern const Form Pv_Pots, Pv_Outs;

// Tank
extern const Form Tn_Pots, Tn_Outs;

// Receiving units: service reservoir, treatment plant
extern const Form Rs_Pots, Rs_Outs, Rs_Mixing;
extern const Form Tp_Pots, Tp_Outs, Tp_Mixing;

// Multiplier
extern const Form Ml_Outs;

// Splitter
extern const Form Sp_Outs;

// Well
extern const Form Gw_Pots, Gw_Outs;

// Reservoir
extern const Form Sw_Pots, Sw_Outs;

// Supply works: abstraction, treatment line, potable treatment
extern const Form Aq_Pots, Aq_Outs;
extern const Form Wp_Pots, Wp_Outs;
extern const Form Pt_Pots, Pt_Outs;

// Hydropower
extern const Form Hd_Pots;

// Demand source
extern const Form In_Outs;

// Green area
extern const Form Bg_Pots, Bg_Outs;

// Quality: from a reservoir, setter, switch
extern const Form Fc_Outs, Fl_Outs, Qs_Outs;

// Detention basin
extern const Form Dt_Outs;

// Delay
extern const Form Sl_Outs;

// Thresholds: divider, switch
extern const Form Dv_Outs, Es_Outs;

// Pumped storage
extern const Form Rn_Outs;

// Pump
extern const Form Pm_Pots;

// Membrane
extern const Form Mn_Pots, Mn_Outs;

// Radiation energy: solar panel, net radiation
extern const Form Pa_Pots, Nr_Pots;

// Wind turbine
extern const Form Wn_Pots;

// Soil store
extern const Form Th_Outs, Th_Pots;

// Quota limiter
extern const Form Mt_Outs;

#endif
