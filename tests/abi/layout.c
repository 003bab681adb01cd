/* Prints the offsets and sizes of all that host and library share, one a line. Compiled as C11 and as C++20.
 *
 * With an argument it runs a small network instead: two junctions and a logger. */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "AUEglobals.h"

#define SIZE(type) printf(#type " size %zu\n", sizeof(type))
/* Through a pointer to the field its size is known without an object: sizeof does not evaluate. */
#define FIELD(type, field) printf(#type "." #field " %zu %zu\n", offsetof(type, field), sizeof(((type*)NULL)->field))

static void printRows(void) {
    SIZE(Signal);
    FIELD(Signal, quantity);
    FIELD(Signal, quality);
    SIZE(ComponentRow);
    FIELD(ComponentRow, id);
    FIELD(ComponentRow, techid);
    FIELD(ComponentRow, key);
    FIELD(ComponentRow, brand);
    FIELD(ComponentRow, size);
    SIZE(ConnectionRow);
    FIELD(ConnectionRow, link);
    FIELD(ConnectionRow, senderId);
    FIELD(ConnectionRow, senderPort);
    FIELD(ConnectionRow, receiverId);
    FIELD(ConnectionRow, receiverPort);
    SIZE(SpecificationRow);
    FIELD(SpecificationRow, brand);
    FIELD(SpecificationRow, select1);
    FIELD(SpecificationRow, select2);
    FIELD(SpecificationRow, number);
    FIELD(SpecificationRow, value);
    SIZE(SeriesEntry);
    FIELD(SeriesEntry, id);
    FIELD(SeriesEntry, Value);
    SIZE(SignalSeriesEntry);
    FIELD(SignalSeriesEntry, id);
    FIELD(SignalSeriesEntry, Signal);
    SIZE(SplitEntry);
    FIELD(SplitEntry, id);
    FIELD(SplitEntry, nMembers);
    FIELD(SplitEntry, members);
    FIELD(SplitEntry, beta);
}

#define TABLE(name)          \
    FIELD(AUEglobals, name); \
    FIELD(AUEglobals, n##name)

static void printRecord(void) {
    SIZE(AUEglobals);
    FIELD(AUEglobals, StartTime);
    FIELD(AUEglobals, nSteps);
    FIELD(AUEglobals, TimeStep);
    FIELD(AUEglobals, Latitude);
    FIELD(AUEglobals, StopOnInfeas);
    FIELD(AUEglobals, BuildTree);
    FIELD(AUEglobals, CurStep);
    FIELD(AUEglobals, PotCompIds);
    FIELD(AUEglobals, nPotComps);
    TABLE(TechSpecs);
    FIELD(AUEglobals, Net_Compnt);
    FIELD(AUEglobals, nComps);
    FIELD(AUEglobals, Net_Conn);
    FIELD(AUEglobals, nConns);
    TABLE(FreqSer);
    TABLE(Rainfall);
    TABLE(Temp);
    TABLE(Tmin);
    TABLE(Tmax);
    TABLE(Wind);
    TABLE(Multpls);
    TABLE(Threshold);
    TABLE(Occup);
    TABLE(Dmdflct);
    TABLE(InsDmd);
    TABLE(WatQuant);
    TABLE(WatQual);
    FIELD(AUEglobals, nSplits);
    FIELD(AUEglobals, Splits);
    TABLE(Logs);
    TABLE(WatBod);
    FIELD(AUEglobals, NrgPot);
    FIELD(AUEglobals, InfPot);
    FIELD(AUEglobals, LosPot);
    FIELD(AUEglobals, EvaPot);
    FIELD(AUEglobals, CapPot);
    FIELD(AUEglobals, OprPot);
    FIELD(AUEglobals, ErrMsg);
    FIELD(AUEglobals, ErrFlag);
}

static int call(void) {
    ComponentRow components[3] = {{1, 30, 0, 0, 0}, {2, 30, 0, 0, 0}, {3, 26, 0, 0, 0}};
    ConnectionRow connections[2] = {{1, 1, 1, 2, 1}, {2, 2, 1, 3, 1}};
    AUEglobals record;
    int32_t status;
    memset(&record, 0, sizeof record);
    record.nSteps = 2;
    record.TimeStep = 1;
    record.Net_Compnt = components;
    record.nComps = 3;
    record.Net_Conn = connections;
    record.nConns = 2;
    status = KESTO_simul(&record, 1, 2);
    if (status != KESTO_SUCCESS || record.CurStep != 2 || record.nLogs != 1) return 1;
    if (record.Logs[0].id != 3 || record.Logs[0].Signal[1].quality != -1.0F) return 1;
    FreeAUEglobals(&record);
    if (record.Logs != NULL || record.nLogs != 1) return 1;
    printf("called from outside: %d\n", (int)status);
    return 0;
}

int main(int argc, char** argv) {
    if (argc > 1 && strcmp(argv[1], "call") == 0) return call();
    printRows();
    printRecord();
    return 0;
}
