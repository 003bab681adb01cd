// A record made of a fuzzer's bytes, as a host could fill it: an odd random network, of which more is made odd. Every
// pointer is valid and every array has guards, so that the address sanitizer sees a read beside it. All numbers are
// free.
#ifndef KESTO_TESTS_FUZZ_ENGINE_RECORD_H
#define KESTO_TESTS_FUZZ_ENGINE_RECORD_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "host_record.h"

using Call = std::pair<std::int32_t, std::int32_t>;  // first and last step

struct FuzzedHost {
    std::unique_ptr<HostRecord> host;
    std::vector<Call> calls;  // one after the other on this record, each followed by FreeAUEglobals
};

FuzzedHost makeHost(const std::uint8_t* data, std::size_t size);

// Keeps what is legal but endless out of a record: billions of steps, paths whose number grows exponentially, and walks
// that multiply a million times without settling.
void bound(FuzzedHost& host);

#endif
