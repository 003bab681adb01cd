// make_networks FOLDER FIRST COUNT     Writes the random networks FIRST ... FIRST + COUNT - 1 as FOLDER/SEED.network,
//                                      every eighth an odd one.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "network_file.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: make_networks FOLDER FIRST COUNT\n");
        return 2;
    }
    const auto first = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
    const auto count = static_cast<std::uint32_t>(std::strtoul(argv[3], nullptr, 10));
    for (std::uint32_t seed = first; seed < first + count; ++seed) {
        std::ofstream file(std::string(argv[1]) + "/" + std::to_string(seed) + ".network");
        const RandomOptions options{.mostSteps = 40, .mostComponents = 60, .odd = seed % 8 == 0};
        write(file, makeRandomModel(options, seededDice(seed)));
        if (!file.flush()) {
            std::fprintf(stderr, "cannot write into %s\n", argv[1]);
            return 1;
        }
    }
    return 0;
}
