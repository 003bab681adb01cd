// golden_networks EXPECTED: runs fixed networks and compares fingerprints of all they put out with those of the file.
// golden_networks --print: prints the fingerprints as the file has them. A change of any is a change of results and
// needs a reason in the changelog.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include "network.h"
#include "outcome.h"
#include "utc.h"

namespace {

// A generator written out here, so that the networks are the same with every standard library (Knuth's MMIX constants).
class FixedDice {
  public:
    explicit FixedDice(std::uint64_t seed) : state_(seed) {}
    int operator()(int low, int end) {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        const auto span = static_cast<std::uint64_t>(end - low);
        return low + static_cast<int>((state_ >> 33) % span);
    }

  private:
    std::uint64_t state_;
};

// FNV-1a over the names and values, which are written to the bit.
std::uint64_t fingerprint(const Outcome& outcome) {
    std::uint64_t hash = 14695981039346656037ULL;
    const auto add = [&](const std::string& text) {
        for (const char c : text + "\n")
            hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    };
    for (const auto& [name, values] : outcome.values) {
        add(name);
        for (const std::string& value : values)
            add(value);
    }
    add(outcome.ending);
    return hash;
}

std::string line(const std::string& name, NetworkOptions options, std::uint64_t seed) {
    FixedDice dice(seed);
    const Model model = makeNetwork(options, [&](int low, int end) { return dice(low, end); });
    const Outcome result = outcome(model);
    char text[200];
    std::snprintf(text, sizeof text, "%s-%llu components=%zu steps=%d status=%.10s fingerprint=%016llx", name.c_str(),
                  static_cast<unsigned long long>(seed), model.components.size(), model.nSteps, result.ending.c_str(),
                  static_cast<unsigned long long>(fingerprint(result)));
    return text;
}

std::map<std::string, std::string> runAll() {
    const std::pair<const char*, NetworkOptions> sets[] = {
        {"all", {true, true, true, 800, 80}},
        {"water", {false, false, false, 800, 80}},
        {"traced", {false, false, true, 800, 80}},
        {"delayed", {true, false, false, 800, 80}},
    };
    std::map<std::string, std::string> lines;
    for (const auto& [name, options] : sets) {
        for (std::uint64_t seed = 1; seed <= 6; ++seed) {
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
