// A record made of a fuzzer's bytes, as a host could fill it: every pointer is valid and every array is a heap block of
// exactly its size, so that the address sanitizer sees a read beside it. All numbers are free.
#ifndef KESTO_TESTS_FUZZ_ENGINE_RECORD_H
#define KESTO_TESTS_FUZZ_ENGINE_RECORD_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "AUEglobals.h"

// Arrays of the host. Those that the library may not write are compared with a copy afterwards.
class HostArrays {
  public:
    template <class T>
    T* put(const std::vector<T>& values, bool writable = false) {
        const auto* const bytes = reinterpret_cast<const std::byte*>(values.data());
        return static_cast<T*>(put(bytes, values.size() * sizeof(T), writable));
    }
    bool unchanged() const;
    void remember();  // takes the content as it is now for the host's

  private:
    struct Free {
        void operator()(void* block) const { std::free(block); }
    };
    struct Array {
        std::unique_ptr<void, Free> block;
        std::vector<std::byte> before;
    };
    void* put(const std::byte* bytes, std::size_t size, bool writable);

    std::vector<Array> arrays_;
};

struct Call {
    std::int32_t first;
    std::int32_t last;
};

struct FuzzedHost {
    HostArrays arrays;
    std::unique_ptr<AUEglobals> record;
    std::vector<Call> calls;  // one after the other on this record, each followed by FreeAUEglobals
};

FuzzedHost makeHost(const std::uint8_t* data, std::size_t size);

// Keeps what is legal but endless out of a record: billions of steps, paths whose number grows exponentially, and walks
// that multiply a million times without settling.
void bound(FuzzedHost& host);

#endif
