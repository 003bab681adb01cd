// random_networks FIRST COUNT LENGTH...: runs random networks with blocks of each length and compares all that a host
// can see afterwards with the same run by turns. Each run is in a process of its own. random_networks --values SEED
// LENGTH prints what a host can see of one network, a line for each series.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "bits.h"
#include "block_length.h"
#include "child.h"
#include "playback.h"
#include "simulation.h"
#include "utc.h"

namespace {

// In every eighth network a state lies in the table of components, or in that of specifications.
void layStateInTable(std::uint32_t seed, HostRecord& host) {
    if (seed % 8 != 0) return;
    std::mt19937 random(seed);
    AUEglobals& record = host.record();
    const Table table = random() % 2 == 0 ? Table::WatQuant : Table::WatQual;
    const bool isOfComponents = random() % 4 != 0;
    float* const rows = isOfComponents ? &record.Net_Compnt->id : &record.TechSpecs->host0;
    const std::int32_t elements = isOfComponents ? 5 * record.nComps : 9 * record.nTechSpecs;
    const std::int32_t places = elements - record.nSteps + 1;
    if (places < 1 || host.count(table) < 1) return;
    const auto below = [&](std::int32_t end) { return random() % static_cast<std::uint32_t>(end); };
    host.entries(table)[below(host.count(table))].Value = rows + below(places);
}

std::string textOf(std::uint32_t seed, bool inFull) {
    std::string lines;
    const auto tell = [&](const std::string& name, const std::string& text) {
        const bool isLong = text.size() > 100 && !inFull;
        lines += std::to_string(seed) + " " + name + ": " + (isLong ? std::to_string(fingerprint(text)) : text) + "\n";
    };
    play(makeRandomModel(seed), tell, [&](HostRecord& host) { layStateInTable(seed, host); });
    return lines;
}

std::vector<std::string> lines(std::uint32_t seed, std::int32_t length, bool inFull = false) {
    blockLength = length;
    const ChildResult child = runInChild([&] { return textOf(seed, inFull); });
    std::vector<std::string> lines;
    std::istringstream answer(child.exited() ? child.answer : std::to_string(seed) + " died: " + child.describe());
    for (std::string line; std::getline(answer, line);)
        lines.push_back(line);
    return lines;
}

struct Totals {
    int calls = 0;
    int succeeded = 0;
    std::size_t results = 0;
    int different = 0;

    void count(const std::vector<std::string>& lines) {
        results += lines.size();
        for (const std::string& line : lines) {
            if (line.find("status: ") == std::string::npos) continue;
            ++calls;
            succeeded += line.ends_with(": " + std::to_string(KESTO_SUCCESS)) ? 1 : 0;
        }
    }

    void compare(const std::vector<std::string>& byTurns, const std::vector<std::string>& inBlocks,
                 std::int32_t length) {
        const std::size_t count = std::max(byTurns.size(), inBlocks.size());
        for (std::size_t i = 0; i < count; ++i) {
            const std::string expected = i < byTurns.size() ? byTurns[i] : "nothing";
            const std::string found = i < inBlocks.size() ? inBlocks[i] : "nothing";
            if (expected == found || ++different > kShown) continue;
            std::printf("by turns %s\n%8d %s\n", expected.c_str(), length, found.c_str());
        }
    }

    static constexpr int kShown = 20;
};

bool compareAll(std::uint32_t first, std::uint32_t count, const std::vector<std::int32_t>& lengths) {
    Totals totals;
    for (std::uint32_t seed = first; seed < first + count; ++seed) {
        const std::vector<std::string> byTurns = lines(seed, kNoBlocks);
        totals.count(byTurns);
        for (const std::int32_t length : lengths)
            totals.compare(byTurns, lines(seed, length), length);
    }
    std::printf("%u networks, %d calls, %d of them to their end, %zu results, %zu lengths of a block, %d differences\n",
                count, totals.calls, totals.succeeded, totals.results, lengths.size(), totals.different);
    // Too few that run to their end would show little.
    return totals.different == 0 && totals.succeeded * 5 > totals.calls * 2;
}

}  // namespace

int main(int argc, char** argv) {
    useUtc();
    if (argc < 4) return EXIT_FAILURE;
    std::vector<std::int32_t> lengths;
    for (int i = 3; i < argc; ++i)
        lengths.push_back(std::atoi(argv[i]));
    if (std::string_view(argv[1]) == "--values") {
        for (const std::string& line : lines(static_cast<std::uint32_t>(std::atoi(argv[2])), lengths[0], true))
            std::printf("%s\n", line.c_str());
        return EXIT_SUCCESS;
    }
    const auto first = static_cast<std::uint32_t>(std::atoi(argv[1]));
    const auto count = static_cast<std::uint32_t>(std::atoi(argv[2]));
    return compareAll(first, count, lengths) ? EXIT_SUCCESS : EXIT_FAILURE;
}
