/* KESTO, simulation engine for the urban water cycle: the record that host and library share.
 *
 * This header is the library's whole interface: one record, two functions. It is valid C11 and C++20. Two separately
 * built programs share the record, so its layout is fixed to the byte: natural alignment on x86-64, little-endian,
 * pointers of 8 bytes. The assertions below hold host and library to it.
 *
 * Names such as AUEglobals, Net_Compnt or nSplits look foreign beside the rest of the code. They are the names under
 * which hosts, manuals and other languages know these fields, and are never changed.
 *
 * Ownership: the host allocates and frees the record and every input table and series. The library allocates the eight
 * output tables (Logs, WatBod and the six potentials) in KESTO_simul and frees them in FreeAUEglobals. Of the record
 * itself it writes only CurStep, the output tables with their counts, ErrMsg and ErrFlag; of the host's series only
 * those of WatQuant and WatQual that belong to components with a state.
 */
#ifndef KESTO_AUEGLOBALS_H
#define KESTO_AUEGLOBALS_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32) && defined(KESTO_BUILDING)
#define KESTO_API __declspec(dllexport)
#elif defined(_WIN32)
#define KESTO_API __declspec(dllimport)
#else
#define KESTO_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* What KESTO_simul returns. */
#define KESTO_SUCCESS 123456789          /* 0x075BCD15 */
#define KESTO_SETUP_FAILURE (-123456798) /* 0xF8A432E2: an allocation failed, or set-up found an error */
#define KESTO_RUN_FAILURE (-123456789)   /* 0xF8A432EB: an error in the time loop, no calculation order, bad topology */

/* What flows along a connection in one step. */
typedef struct Signal {
    float quantity; /* water, or water asked for [vol/step]; -1 where a component left the output unset */
    float quality;  /* -1 where the signal carries none (demands, deficits, sums) */
} Signal;

/* Component. Ids, type codes and brands are integers held as floats, exact up to 2^24. */
typedef struct ComponentRow {
    float id;
    float techid; /* type code, 1 ... 64 */
    float key;    /* id under which the component's input series and potentials are filed; below 1: no potentials */
    float brand;  /* brand of its specifications */
    float size;   /* area, volume, number of units ...: what it means depends on the type */
} ComponentRow;

/* Connection from an output port (1 or 2) of a sender to an input port (1 or 2) of a receiver. */
typedef struct ConnectionRow {
    int32_t link; /* the host's own number; not read */
    int32_t senderId;
    int32_t senderPort;
    int32_t receiverId;
    int32_t receiverPort;
} ConnectionRow;

/* One specification of a brand. Columns named host... belong to the host and are not read. */
typedef struct SpecificationRow {
    float host0;
    float host1;
    float brand;
    float host3;
    float select1; /* the row counts only when both selectors are 1 */
    float select2;
    float number;
    float value;
    float host8;
} SpecificationRow;

/* A daily series: nSteps values, found by the first entry that carries the id searched for. */
typedef struct SeriesEntry {
    int32_t id;
    float* Value; /* entries of FreqSer hold 11 values a step, one for each appliance kind */
} SeriesEntry;

/* A recorded series of nSteps signals. */
typedef struct SignalSeriesEntry {
    int32_t id;
    struct Signal* Signal;
} SignalSeriesEntry;

/* One group of stores that a splitter balances; all entries with the splitter's id are its groups, in table order. */
typedef struct SplitEntry {
    int32_t id; /* of the splitter */
    int32_t nMembers;
    int32_t* members; /* component ids */
    float beta;
} SplitEntry;

typedef struct AUEglobals {
    int32_t StartTime;    /* calendar time of step 0 [s since 1970-01-01 00:00 UTC] */
    int32_t nSteps;       /* length of every series */
    float TimeStep;       /* length of one step [d] */
    float Latitude;       /* of the site, positive north [degrees] */
    int32_t StopOnInfeas; /* non-zero: an abstraction that cannot deliver what is asked stops the run */
    int32_t BuildTree;    /* non-zero: the receiving units trace their sources */
    int32_t CurStep;      /* index of the step being computed; written by the library */

    int32_t* PotCompIds; /* ids that get potential series */
    int32_t nPotComps;
    SpecificationRow* TechSpecs;
    int32_t nTechSpecs;
    ComponentRow* Net_Compnt;
    int32_t nComps;
    ConnectionRow* Net_Conn;
    int32_t nConns;

    SeriesEntry* FreqSer; /* uses of each appliance kind in a group [1/d, per person or per household] */
    int32_t nFreqSer;
    SeriesEntry* Rainfall;
    int32_t nRainfall;
    SeriesEntry* Temp;
    int32_t nTemp;
    SeriesEntry* Tmin;
    int32_t nTmin;
    SeriesEntry* Tmax;
    int32_t nTmax;
    SeriesEntry* Wind;
    int32_t nWind;
    SeriesEntry* Multpls; /* multipliers of potentials; factors of multipliers */
    int32_t nMultpls;
    SeriesEntry* Threshold;
    int32_t nThreshold;
    SeriesEntry* Occup; /* occupancy of a group */
    int32_t nOccup;
    SeriesEntry* Dmdflct; /* fluctuation of a group's demand */
    int32_t nDmdflct;
    SeriesEntry* InsDmd; /* demand put in from outside */
    int32_t nInsDmd;
    SeriesEntry* WatQuant; /* stored quantity of a component at the end of each step; element 0 is its initial value */
    int32_t nWatQuant;
    SeriesEntry* WatQual; /* stored quality, likewise */
    int32_t nWatQual;
    int32_t nSplits; /* the one count that stands before its table */
    SplitEntry* Splits;

    SignalSeriesEntry* Logs; /* output: of loggers (26), then delays (51), then quota limiters (64) */
    int32_t nLogs;
    SignalSeriesEntry* WatBod; /* output: of water bodies (43) */
    int32_t nWatBod;
    SeriesEntry* NrgPot; /* output: energy; nPotComps entries, like the five that follow */
    SeriesEntry* InfPot; /* output: infiltration */
    SeriesEntry* LosPot; /* output: losses */
    SeriesEntry* EvaPot; /* output: evaporation */
    SeriesEntry* CapPot; /* output: capacity cost */
    SeriesEntry* OprPot; /* output: operating cost */

    char ErrMsg[256]; /* text of the last error, zero-terminated */
    int32_t ErrFlag;  /* 1 after most errors; the host clears it before a call, the library never does */
} AUEglobals;

/* Runs the steps first ... last (1-based, both included): CurStep takes the values first - 1 ... last - 1.
 *
 * Returns KESTO_SUCCESS or one of the two failures; whatever it returns but success, ErrMsg tells why. On success, and
 * when the time loop stops on an error, the output tables hold the steps that ran. A violated internal invariant is
 * reported on stderr and ends the process. One run at a time in a process: a call during another one's run, in any
 * thread, returns KESTO_SETUP_FAILURE and writes ErrMsg of its own record, unless that is the one that is running. */
KESTO_API int32_t KESTO_simul(AUEglobals* Globals, int32_t first, int32_t last);

/* Frees the output tables and sets their pointers to null; the counts stay. Harmless on null tables. To be called
 * before the next KESTO_simul on the same record. */
KESTO_API void FreeAUEglobals(AUEglobals* Globals);

#ifdef __cplusplus
}
#define KESTO_ASSERT_LAYOUT(condition) static_assert(condition, #condition)
#else
#define KESTO_ASSERT_LAYOUT(condition) _Static_assert(condition, #condition)
#endif

#define KESTO_ASSERT_OFFSET(field, offset) KESTO_ASSERT_LAYOUT(offsetof(AUEglobals, field) == (offset))
KESTO_ASSERT_OFFSET(StartTime, 0);
KESTO_ASSERT_OFFSET(nSteps, 4);
KESTO_ASSERT_OFFSET(TimeStep, 8);
KESTO_ASSERT_OFFSET(Latitude, 12);
KESTO_ASSERT_OFFSET(StopOnInfeas, 16);
KESTO_ASSERT_OFFSET(BuildTree, 20);
KESTO_ASSERT_OFFSET(CurStep, 24);
KESTO_ASSERT_OFFSET(PotCompIds, 32);
KESTO_ASSERT_OFFSET(nPotComps, 40);
KESTO_ASSERT_OFFSET(TechSpecs, 48);
KESTO_ASSERT_OFFSET(nTechSpecs, 56);
KESTO_ASSERT_OFFSET(Net_Compnt, 64);
KESTO_ASSERT_OFFSET(nComps, 72);
KESTO_ASSERT_OFFSET(Net_Conn, 80);
KESTO_ASSERT_OFFSET(nConns, 88);
KESTO_ASSERT_OFFSET(FreqSer, 96);
KESTO_ASSERT_OFFSET(nFreqSer, 104);
KESTO_ASSERT_OFFSET(Rainfall, 112);
KESTO_ASSERT_OFFSET(nRainfall, 120);
KESTO_ASSERT_OFFSET(Temp, 128);
KESTO_ASSERT_OFFSET(nTemp, 136);
KESTO_ASSERT_OFFSET(Tmin, 144);
KESTO_ASSERT_OFFSET(nTmin, 152);
KESTO_ASSERT_OFFSET(Tmax, 160);
KESTO_ASSERT_OFFSET(nTmax, 168);
KESTO_ASSERT_OFFSET(Wind, 176);
KESTO_ASSERT_OFFSET(nWind, 184);
KESTO_ASSERT_OFFSET(Multpls, 192);
KESTO_ASSERT_OFFSET(nMultpls, 200);
KESTO_ASSERT_OFFSET(Threshold, 208);
KESTO_ASSERT_OFFSET(nThreshold, 216);
KESTO_ASSERT_OFFSET(Occup, 224);
KESTO_ASSERT_OFFSET(nOccup, 232);
KESTO_ASSERT_OFFSET(Dmdflct, 240);
KESTO_ASSERT_OFFSET(nDmdflct, 248);
KESTO_ASSERT_OFFSET(InsDmd, 256);
KESTO_ASSERT_OFFSET(nInsDmd, 264);
KESTO_ASSERT_OFFSET(WatQuant, 272);
KESTO_ASSERT_OFFSET(nWatQuant, 280);
KESTO_ASSERT_OFFSET(WatQual, 288);
KESTO_ASSERT_OFFSET(nWatQual, 296);
KESTO_ASSERT_OFFSET(nSplits, 300);
KESTO_ASSERT_OFFSET(Splits, 304);
KESTO_ASSERT_OFFSET(Logs, 312);
KESTO_ASSERT_OFFSET(nLogs, 320);
KESTO_ASSERT_OFFSET(WatBod, 328);
KESTO_ASSERT_OFFSET(nWatBod, 336);
KESTO_ASSERT_OFFSET(NrgPot, 344);
KESTO_ASSERT_OFFSET(InfPot, 352);
KESTO_ASSERT_OFFSET(LosPot, 360);
KESTO_ASSERT_OFFSET(EvaPot, 368);
KESTO_ASSERT_OFFSET(CapPot, 376);
KESTO_ASSERT_OFFSET(OprPot, 384);
KESTO_ASSERT_OFFSET(ErrMsg, 392);
KESTO_ASSERT_OFFSET(ErrFlag, 648);
KESTO_ASSERT_LAYOUT(sizeof(AUEglobals) == 656);
KESTO_ASSERT_LAYOUT(sizeof(Signal) == 8 && offsetof(Signal, quality) == 4);
KESTO_ASSERT_LAYOUT(sizeof(ComponentRow) == 20 && offsetof(ComponentRow, size) == 16);
KESTO_ASSERT_LAYOUT(sizeof(ConnectionRow) == 20 && offsetof(ConnectionRow, receiverPort) == 16);
KESTO_ASSERT_LAYOUT(sizeof(SpecificationRow) == 36 && offsetof(SpecificationRow, value) == 28);
KESTO_ASSERT_LAYOUT(sizeof(SeriesEntry) == 16 && offsetof(SeriesEntry, Value) == 8);
KESTO_ASSERT_LAYOUT(sizeof(SignalSeriesEntry) == 16 && offsetof(SignalSeriesEntry, Signal) == 8);
KESTO_ASSERT_LAYOUT(sizeof(SplitEntry) == 24 && offsetof(SplitEntry, members) == 8 && offsetof(SplitEntry, beta) == 16);
#undef KESTO_ASSERT_OFFSET
#undef KESTO_ASSERT_LAYOUT

#endif
