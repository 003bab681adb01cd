// Delay, type 51 (SL): what reaches it leaves it some steps later. It is also where the ordering cuts a loop.
//
//   out = input of step k - d; nothing, at quality 0, while k < d
//
//   k   this step
//   d   size, rounded: number of steps; 0 passes the input on at once
//
// The inputs are kept in the Logs series of the delay's own id. A call starts with an empty one.

#include "components.h"
#include "components/lookup.h"
#include "errors.h"

void Sl_Outs(std::int32_t id, AUEglobals* Globals, Signal in1, Signal* out1) {
    Signal* const log = findRecord(Globals, Record::Logs, id);
    if (!log || !checkStep(Globals, Globals->CurStep, id)) return;
    const std::int32_t k = Globals->CurStep;
    log[k] = in1;
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return;
    const std::int32_t d = nint(row->size);
    if (d < 0) return error(Globals, text::kNegativeDelay);
    *out1 = k < d ? Signal{0.0F, 0.0F} : log[k - d];
}
