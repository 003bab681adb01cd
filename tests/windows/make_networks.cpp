// make_networks FOLDER FIRST COUNT     Writes the random networks FIRST ... FIRST + COUNT - 1 as FOLDER/SEED.network.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "random_network.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: make_networks FOLDER FIRST COUNT\n");
        return 2;
    }
    const auto first = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
    const auto count = static_cast<std::uint32_t>(std::strtoul(argv[3], nullptr, 10));
    for (std::uint32_t seed = first; seed < first + count; ++seed) {
        std::ofstream file(std::string(argv[1]) + "/" + std::to_string(seed) + ".network");
        write(file, randomNetwork(seed));
        if (!file.flush()) {
            std::fprintf(stderr, "cannot write into %s\n", argv[1]);
            return 1;
        }
    }
    return 0;
}
