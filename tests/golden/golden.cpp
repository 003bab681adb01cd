// golden_networks EXPECTED: runs fixed networks and compares fingerprints of all they put out with those of the file.
// golden_networks --print: prints the fingerprints as the file has them. A change of any is a change of results and
// needs a reason in the changelog.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include "bits.h"
#include "outcome.h"
#include "random_model.h"
#include "utc.h"

namespace {

// The types that the networks are made of. A new type does not belong here, since it would change them all: it gets a
// set of its own.
constexpr std::int32_t kTypes[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 22, 23, 24, 25, 26, 27, 28,
                                   29, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48,
                                   49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63, 64};

// Over the names and values, which are written to the bit.
std::uint64_t fingerprintOf(const Outcome& outcome) {
    std::uint64_t hash = fingerprint("");
    for (const auto& [name, values] : outcome.values) {
        hash = fingerprint(name + "\n", hash);
        for (const std::string& value : values)
            hash = fingerprint(value + "\n", hash);
    }
    return fingerprint(outcome.ending + "\n", hash);
}

std::string line(const std::string& name, const RandomOptions& options, std::uint32_t seed) {
    RandomOptions ofTypes = options;
    ofTypes.types = kTypes;
    const Model model = makeRandomModel(ofTypes, seededDice(seed)).model;
    const Outcome result = outcome(model);
    char text[200];
    std::snprintf(text, sizeof text, "%s-%u components=%zu steps=%d status=%.10s fingerprint=%016llx", name.c_str(),
                  seed, model.components.size(), model.nSteps, result.ending.c_str(),
                  static_cast<unsigned long long>(fingerprintOf(result)));
    return text;
}

std::map<std::string, std::string> runAll() {
    const std::pair<const char*, RandomOptions> sets[] = {
        {"all", {.mostSteps = 800, .mostComponents = 80}},
        {"water", {.mostSteps = 800, .mostComponents = 80, .delays = false, .radiation = false, .tree = false}},
        {"traced", {.mostSteps = 800, .mostComponents = 80, .delays = false, .radiation = false}},
        {"delayed", {.mostSteps = 800, .mostComponents = 80, .radiation = false, .tree = false}},
    };
    std::map<std::string, std::string> lines;
    for (const auto& [name, options] : sets) {
        for (std::uint32_t seed = 1; seed <= 6; ++seed) {
            const std::string text = line(name, options, seed);
            lines[text.substr(0, text.find(' '))] = text;
        }
    }
    return lines;
}

}  // namespace

int main(int argc, char** argv) {
    useUtc();
    const std::string argument = argc > 1 ? argv[1] : "";
    const auto lines = runAll();
    if (argument == "--print") {
        for (const auto& [name, text] : lines)
            std::printf("%s\n", text.c_str());
        return EXIT_SUCCESS;
    }
    std::ifstream file(argument);
    std::size_t same = 0;
    std::size_t expected = 0;
    for (std::string text; std::getline(file, text); ++expected) {
        const auto found = lines.find(text.substr(0, text.find(' ')));
        if (found != lines.end() && found->second == text) {
            ++same;
        } else {
            std::printf("expected %s\n     got %s\n", text.c_str(),
                        found == lines.end() ? "nothing" : found->second.c_str());
        }
    }
    std::printf("%zu of %zu networks as expected\n", same, lines.size());
    return same == lines.size() && expected == lines.size() ? EXIT_SUCCESS : EXIT_FAILURE;
}
