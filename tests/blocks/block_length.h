// The engine with blocks of a length that a test chooses: linked in place of the library, with a KESTO_simul of its
// own.
#ifndef KESTO_TESTS_BLOCK_LENGTH_H
#define KESTO_TESTS_BLOCK_LENGTH_H

#include <cstdint>

// Of the calls to come, as for simulate. At first what KESTO_TEST_BLOCK_LENGTH in the environment says, if anything.
extern std::int32_t blockLength;

#endif
