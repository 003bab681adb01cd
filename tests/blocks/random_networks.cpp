// random_networks FIRST COUNT: runs random networks, each in a process of its own, and prints a fingerprint of each
// thing that a host can see afterwards, one a line. random_networks --values SEED prints one network's values in full.

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "bits.h"
#include "child.h"
#include "host_record.h"
#include "random_model.h"
#include "utc.h"

namespace {

class Printer {
  public:
    Printer(std::uint32_t seed, bool inFull) : seed_(seed), inFull_(inFull) {}

    void series(const std::string& name, const float* values, std::size_t count, std::size_t stride = 1) {
        std::string text;
        for (std::size_t k = 0; values && k < count; ++k)
            text += written(values[k * stride]) + " ";
        line(name, inFull_ ? text : std::to_string(fingerprint(text)));
    }
    void line(const std::string& name, const std::string& text) {
        out_ << seed_ << ' ' << name << ": " << text << '\n';
    }

    std::string text() const { return out_.str(); }

  private:
    // FNV-1a
    static std::uint64_t fingerprint(std::string_view text) {
        std::uint64_t hash = 14695981039346656037ULL;
        for (const char c : text)
            hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        return hash;
    }

    std::uint32_t seed_;
    bool inFull_;
    std::ostringstream out_;
};

void print(Printer& printer, const std::string& call, HostRecord& host) {
    const AUEglobals& record = host.record();
    const auto steps = static_cast<std::size_t>(record.nSteps);
    const auto signals = [&](const char* name, const SignalSeriesEntry* table, std::int32_t count) {
        for (std::int32_t i = 0; table && i < count; ++i) {
            const std::string entry = call + name + std::to_string(i);
            printer.series(entry + " quantity", &table[i].Signal->quantity, steps, 2);
            printer.series(entry + " quality", &table[i].Signal->quality, steps, 2);
        }
    };
    signals("Logs ", record.Logs, record.nLogs);
    signals("WatBod ", record.WatBod, record.nWatBod);
    for (const std::string_view name : kPotentialNames) {
        const SeriesEntry* const table = potentialTable(record, name);
        for (std::int32_t i = 0; table && i < record.nPotComps; ++i)
            printer.series(call + std::string(name) + " " + std::to_string(i), table[i].Value, steps);
    }
    for (const Table table : {Table::WatQuant, Table::WatQual}) {
        for (std::int32_t i = 0; i < host.count(table); ++i)
            printer.series(call + (table == Table::WatQuant ? "WatQuant " : "WatQual ") + std::to_string(i),
                           host.entries(table)[i].Value, steps);
    }
    printer.line(call + "ending", std::to_string(record.ErrFlag) + " " + std::to_string(record.CurStep) + " " +
                                      record.ErrMsg + " " + host.damage());
}

std::string play(std::uint32_t seed, bool inFull) {
    const RandomModel random = makeRandomModel(seed);
    HostRecord host(random.model);
    for (const Overlap& overlap : random.overlaps) {
        host.entries(overlap.table)[overlap.entry].Value =
            host.entries(overlap.other)[overlap.otherEntry].Value + overlap.elements;
    }
    Printer printer(seed, inFull);
    int number = 0;
    for (const auto& [first, last] : random.calls) {
        const std::string call = "call " + std::to_string(++number) + " ";
        printer.line(call + "status", std::to_string(host.run(first, last)));
        print(printer, call, host);
        host.free();
        host.record().ErrFlag = 0;
    }
    return printer.text();
}

}  // namespace

int main(int argc, char** argv) {
    useUtc();
    const bool inFull = argc == 3 && std::string_view(argv[1]) == "--values";
    if (argc != 3) return EXIT_FAILURE;
    const auto first = static_cast<std::uint32_t>(std::atoi(inFull ? argv[2] : argv[1]));
    const auto count = static_cast<std::uint32_t>(inFull ? 1 : std::atoi(argv[2]));
    for (std::uint32_t seed = first; seed < first + count; ++seed) {
        const ChildResult child = runInChild([&] { return play(seed, inFull); });
        std::printf("%s", child.answer.c_str());
        if (!child.exited()) std::printf("%u died: %s\n", seed, child.describe().c_str());
    }
    return EXIT_SUCCESS;
}
