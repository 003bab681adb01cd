// property_tests: properties of random networks.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "properties.h"

int main() {
    setenv("TZ", "UTC", 1);
    const char* const longRun = std::getenv("KESTO_TEST_LONG");
    const bool isLong = longRun != nullptr && std::string(longRun) == "1";
    setenv("RC_PARAMS", isLong ? "max_success=3000" : "max_success=100 seed=4711", 0);
    const bool conserves = checkConservation();
    const bool invariant = checkInvariance();
    return conserves && invariant ? EXIT_SUCCESS : EXIT_FAILURE;
}
