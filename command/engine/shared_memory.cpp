#include "shared_memory.h"

#include <cstdint>
#include <new>

namespace kesto {

void* SharedMemory::takeBytes(std::size_t bytes) {
    const std::size_t length = rounded(bytes);
    if (used_ + length > size_) throw std::bad_alloc();
    void* address = begin_ + used_;
    used_ += length;
    return address;
}

// What shares a page with other memory stays.
void giveBack(void* memory, std::size_t bytes) {
    constexpr std::uintptr_t kPage = 4096;
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + kPage - 1) / kPage * kPage, last = (begin + bytes) / kPage * kPage;
    if (first < last) giveBackPages(static_cast<std::byte*>(memory) + (first - begin), last - first);
}

}  // namespace kesto
