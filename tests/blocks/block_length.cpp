#include "block_length.h"

#include <cstdlib>

#include "AUEglobals.h"
#include "simulation.h"

namespace {

std::int32_t fromEnvironment() {
    const char* const length = std::getenv("KESTO_TEST_BLOCK_LENGTH");
    return length ? std::atoi(length) : kFittingBlocks;
}

}  // namespace

std::int32_t blockLength = fromEnvironment();

std::int32_t KESTO_simul(AUEglobals* Globals, std::int32_t first, std::int32_t last) {
    return simulate(Globals, first, last, blockLength);
}
