// run_network FILE       Makes the calls of one network in this process and prints all that they leave: status, error,
//                        step, output tables and states. Any NaN is "nan": its sign and payload are the processor's
//                        affair.

#include <cstdio>
#include <exception>
#include <fstream>

#include "network_file.h"
#include "playback.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: run_network FILE\n");
        return 2;
    }
    try {
        std::ifstream file(argv[1]);
        play(readNetwork(file), [](const std::string& name, const std::string& text) {
            std::printf("%s: %s\n", name.c_str(), text.c_str());
        });
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", argv[1], e.what());
        return 2;
    }
    return 0;
}
