// One call of the library as a text file: the record's content, the steps, and each float as its bits, so that another
// build of the library, on another system, can be given the very same.
#ifndef KESTO_TESTS_NETWORK_FILE_H
#define KESTO_TESTS_NETWORK_FILE_H

#include <iosfwd>

#include "model.h"

struct NetworkCall {
    Model model;
    std::int32_t first = 1;
    std::int32_t last = 1;
};

void write(std::ostream& out, const NetworkCall& call);

// Throws std::runtime_error on anything that write() would not have written.
NetworkCall readNetworkCall(std::istream& in);

#endif
