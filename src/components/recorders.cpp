// Recorders: logger, type 26 (LG), and water body, type 43 (WB). Connector: its copying, type 52 (CN).
//
//   record[k] = input
//
//   record   series of the component's own id in Logs (LG) or WatBod (WB)
//   k        this step; a second record in the same step overwrites the first
//
// A connector duplicates its input onto both outputs; it does not divide it.

#include "components.h"
#include "components/lookup.h"

namespace {

void append(AUEglobals* Globals, Record kind, std::int32_t id, Signal signal) {
    Signal* const record = findRecord(Globals, kind, id);
    if (!record || !checkStep(Globals, Globals->CurStep, id)) return;
    record[Globals->CurStep] = signal;
}

}  // namespace

void Lg_Append(std::int32_t id, AUEglobals* Globals, Signal signal) {
    append(Globals, Record::Logs, id, signal);
}

void Wb_Append(std::int32_t id, AUEglobals* Globals, Signal signal) {
    append(Globals, Record::WatBod, id, signal);
}

void CopyIn_To_Out(const Signal* source, Signal* target) {
    *target = *source;
}
