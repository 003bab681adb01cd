// The exported calls on any record a host could hand over. Under the address and undefined-behaviour sanitizers nothing
// may come of it but a documented status with one of the engine's texts, or one of the invariants that a network can
// violate.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "engine_record.h"
#include "errors.h"

namespace {

constexpr char kHostsText[] = "the host's own text";

// What a network can violate; the engine's other invariants hold whatever the host does.
struct Violated {};
struct NamedInvariant {
    std::string_view expression;
    std::string_view module;
    int line;
};
constexpr NamedInvariant kViolable[] = {
    {"ir!=NOTFOUND", "simulation", 601},
    {"icomp+1<pathsToLeafs.PathToLeaf[ipath].pathlen", "simulation", 131},
    {"1==0", "binarytree", 125},
};

constexpr const char* kTexts[] = {
    text::kNoMemory,
    text::kNoSequence,
    text::kInputCount,
    text::kUnrecognized,
    text::kWrongInputs,
    text::kIdNotFound,
    text::kSpecificationNotFound,
    text::kMultiplierNotFound,
    text::kSeriesNotFound,
    text::kNoValues,
    text::kStepOutside,
    text::kRecordNotFound,
    text::kFrequencyNotFound,
    text::kApplianceKind,
    text::kInfeasible,
    text::kNoReservoir,
    text::kNoPaths,
    text::kNegativeDelay,
    text::kDailyStore,
    text::kDailyRadiation,
    text::kDailyQuota,
    text::kTemperatures,
    text::kNoCalendar,
    text::kNoNode,
    text::kUnknownOnPath,
};

// Whether a text can have come of a format with %d and %s.
bool matches(std::string_view format, std::string_view text) {
    if (format.empty()) return text.empty();
    if (format.substr(0, 2) == "%d") {
        std::size_t digits = !text.empty() && text[0] == '-' ? 1 : 0;
        const std::size_t first = digits;
        while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9')
            ++digits;
        return digits > first && matches(format.substr(2), text.substr(digits));
    }
    if (format.substr(0, 2) == "%s") {
        for (std::size_t length = 1; length <= text.size(); ++length)
            if (matches(format.substr(2), text.substr(length))) return true;
        return false;
    }
    return !text.empty() && text[0] == format[0] && matches(format.substr(1), text.substr(1));
}

void require(bool holds, const char* what, const AUEglobals& record) {
    if (holds) return;
    std::fprintf(stderr, "%s; ErrMsg: %.256s\n", what, record.ErrMsg);
    std::abort();
}

void checkFailure(const AUEglobals& record, std::int32_t flagBefore) {
    const std::string_view said = record.ErrMsg;
    if (flagBefore == 1 && said == kHostsText) return;
    const bool known =
        std::any_of(std::begin(kTexts), std::end(kTexts), [&](auto format) { return matches(format, said); });
    require(known, "a failure without a documented text", record);
}

void checkSuccess(const AUEglobals& record, Call call) {
    const auto [first, last] = call;
    const auto before = static_cast<std::int32_t>(static_cast<std::uint32_t>(first) - 1U);
    require(record.ErrFlag != 1, "success with the error flag", record);
    require(record.CurStep == std::max(before, last), "success at another step", record);
}

// Every entry of the output tables can be read and written to its end.
void touchOutputs(const AUEglobals& record) {
    const auto steps = static_cast<std::size_t>(std::max(record.nSteps, 0));
    for (std::int32_t i = 0; i < record.nLogs; ++i)
        std::memset(record.Logs[i].Signal, 1, steps * sizeof(Signal));
    for (std::int32_t i = 0; i < record.nWatBod; ++i)
        std::memset(record.WatBod[i].Signal, 1, steps * sizeof(Signal));
    for (const auto& [name, entries] : kPotentialTables) {
        const SeriesEntry* const table = record.*entries;
        for (std::int32_t k = 0; k < record.nPotComps; ++k) {
            require(table[k].id == record.PotCompIds[k], "a potential under another id", record);
            std::memset(table[k].Value, 1, steps * sizeof(float));
        }
    }
}

void run(HostRecord& host, Call call) {
    AUEglobals& record = host.record();
    const std::int32_t flagBefore = record.ErrFlag;
    std::strcpy(record.ErrMsg, kHostsText);
    try {
        const std::int32_t status = host.run(call.first, call.second);
        switch (status) {
            case KESTO_SUCCESS:
                checkSuccess(record, call);
                touchOutputs(record);
                break;
            case KESTO_SETUP_FAILURE:
            case KESTO_RUN_FAILURE:
                checkFailure(record, flagBefore);
                break;
            default:
                require(false, "an unknown status", record);
        }
    } catch (const Violated&) {
    }
    require(host.damage().empty(), host.damage().c_str(), record);
    host.free();
    require(host.damage().empty(), host.damage().c_str(), record);
}

}  // namespace

// Stands in the place of the engine's own, by the linker: what a network can violate is noted and the fuzzing goes on.
void reportInvariant(bool holds, const char* expression, const char* module,
                     int line) __asm__("__wrap__Z9invariantbPKcS0_i");
void reportInvariant(bool holds, const char* expression, const char* module, int line) {
    if (holds) return;
    for (const NamedInvariant& named : kViolable)
        if (named.expression == expression && named.module == module && named.line == line) throw Violated{};
    std::fprintf(stderr, "Assertion failed: %s, file %s.cpp, line %d\n", expression, module, line);
    std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedHost fuzzed = makeHost(data, size);
    bound(fuzzed);
    for (const Call& call : fuzzed.calls)
        run(*fuzzed.host, call);
    return 0;
}
