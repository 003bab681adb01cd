#include "shared_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace kesto {

SharedMemory::SharedMemory(std::size_t bytes) : size_(std::max<std::size_t>(bytes, 16)) {
    void* address = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (address == MAP_FAILED) throw std::bad_alloc();
    begin_ = static_cast<std::byte*>(address);
}

SharedMemory::~SharedMemory() {
    munmap(begin_, size_);
}

void* SharedMemory::takeBytes(std::size_t bytes) {
    const std::size_t length = rounded(bytes);
    if (used_ + length > size_) throw std::bad_alloc();
    void* address = begin_ + used_;
    used_ += length;
    return address;
}

}  // namespace kesto
