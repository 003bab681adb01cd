#include <iostream>

#include "commands.h"
#include "schema.h"

namespace kesto {

int schemaCommand() {
    std::cout << modelSchema();
    return kGood;
}

}  // namespace kesto
