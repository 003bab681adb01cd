// How a run ends for who has started it.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <sstream>
#include <string>

#include "commands.h"

namespace kesto {

// What a run tells in the end. The engine's process makes it, and leaves it to this one as bytes.
struct Ending {
    int status = kRunFailed;
    std::string output, errors;

    std::string toBytes() const { return fmt::format("{} {}\n{}{}", status, output.size(), output, errors); }

    static Ending fromBytes(const std::string& bytes) {
        std::istringstream in(bytes);
        Ending ending;
        std::size_t length = 0;
        in >> ending.status >> length;
        const std::size_t begin = bytes.find('\n') + 1;
        ending.output = bytes.substr(begin, length);
        ending.errors = bytes.substr(begin + length);
        return ending;
    }
};

}  // namespace kesto
