/* A host in C: a roof fills a tank that a garden draws from, for eight days.
 *
 *   cc hosts/c/host.c -Isrc -Lbuild/release -lKESTO -Wl,-rpath,build/release -o build/c-host && build/c-host
 */
#include <stdio.h>
#include <string.h>

#include "AUEglobals.h"

enum { DAYS = 8 };
enum { GROUP = 1, ROOF = 11, TANK = 12, GARDEN = 13, MAINS = 14, SPILL = 15 };
enum { ROOFING = 1, NO_COST = 2, NO_SUCH_BRAND = 9 };

static float rain[DAYS] = {10, 0, 0, 2.5F, 20, 0, 0, 0}; /* mm */
static float demand[DAYS] = {200, 200, 200, 200, 200, 200, 200, 200};
static float stored[DAYS] = {100}; /* L to begin with; the library writes the end of each day over it */

static ComponentRow components[] = {
    /* id, type, group, brand, size */
    {ROOF, 28, GROUP, ROOFING, 80},  /* m2 */
    {GARDEN, 45, GROUP, 0, 100},     /* percent of its demand */
    {TANK, 32, GROUP, NO_COST, 500}, /* L */
    {MAINS, 26, 0, 0, 0},            /* loggers */
    {SPILL, 26, 0, 0, 0},
};
static ConnectionRow connections[] = {
    /* number, from, output, to, input */
    {1, ROOF, 1, TANK, 1},
    {2, GARDEN, 1, TANK, 2},
    {3, TANK, 1, MAINS, 1}, /* what the tank could not give */
    {4, TANK, 2, SPILL, 1},
};
static SpecificationRow specifications[] = {
    /* brand, number and value; the two selectors before the number are 1 */
    {0, 0, ROOFING, 0, 1, 1, 25, 5, 0},    /* quality of the runoff */
    {0, 0, ROOFING, 0, 1, 1, 27, 0.1F, 0}, /* share that wets the roof and evaporates */
    {0, 0, NO_COST, 0, 1, 1, 12, 0, 0},
    {0, 0, NO_COST, 0, 1, 1, 13, 0, 0},
};
static int32_t groups[] = {GROUP};
static SeriesEntry rainfall[] = {{GROUP, rain}};
static SeriesEntry demands[] = {{GARDEN, demand}};
static SeriesEntry storages[] = {{TANK, stored}};

#define COUNT(table) ((int32_t)(sizeof(table) / sizeof((table)[0])))

static AUEglobals network(void) {
    AUEglobals record;
    memset(&record, 0, sizeof record);
    record.nSteps = DAYS;
    record.TimeStep = 1;
    record.Net_Compnt = components;
    record.nComps = COUNT(components);
    record.Net_Conn = connections;
    record.nConns = COUNT(connections);
    record.TechSpecs = specifications;
    record.nTechSpecs = COUNT(specifications);
    record.PotCompIds = groups;
    record.nPotComps = COUNT(groups);
    record.Rainfall = rainfall;
    record.nRainfall = COUNT(rainfall);
    record.InsDmd = demands;
    record.nInsDmd = COUNT(demands);
    record.WatQuant = storages;
    record.nWatQuant = COUNT(storages);
    return record;
}

static void printResults(const AUEglobals* record) {
    int k;
    printf("day  rain mm  stored L   mains L  spilt L  evaporated L\n");
    for (k = 0; k < DAYS; ++k)
        printf("%3d %8.1f %9.1f %9.1f %8.1f %13.1f\n", k + 1, (double)rain[k], (double)stored[k],
               (double)record->Logs[0].Signal[k].quantity,
               (double)record->Logs[1].Signal[k].quantity + 0.0, /* turns the -0 of a dry day into 0 */
               (double)record->EvaPot[0].Value[k]);
}

int main(int argc, char** argv) {
    AUEglobals record = network();
    int32_t status;
    if (argc > 1 && strcmp(argv[1], "broken") == 0) components[0].brand = NO_SUCH_BRAND;
    status = KESTO_simul(&record, 1, DAYS);
    if (status == KESTO_SUCCESS)
        printResults(&record);
    else
        fprintf(stderr, "KESTO: %s (status %d)\n", record.ErrMsg, (int)status);
    FreeAUEglobals(&record);
    return status == KESTO_SUCCESS ? 0 : 1;
}
