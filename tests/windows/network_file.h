// A model and the calls on it as a text file, each float as its bits, so that another build of the library, on another
// system, can be given the very same.
#ifndef KESTO_TESTS_NETWORK_FILE_H
#define KESTO_TESTS_NETWORK_FILE_H

#include <iosfwd>

#include "random_model.h"

void write(std::ostream& out, const RandomModel& network);

// Throws std::runtime_error on anything that write() would not have written.
RandomModel readNetwork(std::istream& in);

#endif
