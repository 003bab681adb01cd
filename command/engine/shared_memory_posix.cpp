#include <fmt/format.h>
#include <malloc.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

#include "shared_memory.h"

namespace kesto {

SharedMemory::SharedMemory(std::size_t bytes) : size_(std::max<std::size_t>(bytes, 16)) {
    void* address = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (address == MAP_FAILED) throw std::bad_alloc();
    begin_ = static_cast<std::byte*>(address);
}

SharedMemory::~SharedMemory() {
    munmap(begin_, size_);
}

void giveBackPages(std::byte* first, std::size_t bytes) {
    madvise(first, bytes, MADV_DONTNEED);
}

namespace {

// Takes one ring, if there is one.
bool isRung(int bell) {
    eventfd_t rings = 0;
    return eventfd_read(bell, &rings) == 0;
}

}  // namespace

Bell::Bell() : handle_(eventfd(0, EFD_SEMAPHORE | EFD_NONBLOCK)) {
    if (handle_ < 0) throw std::runtime_error(fmt::format("cannot open an event: {}", std::strerror(errno)));
}

Bell::~Bell() {
    close(handle_);
}

void Bell::ring() {
    eventfd_write(handle_, 1);
}

void Bell::silence() {
    while (isRung(handle_)) {
    }
}

void Bell::wait() {
    pollfd waiting{handle_, POLLIN, 0};
    while (!isRung(handle_)) {
        poll(&waiting, 1, -1);
    }
}

// The C library returns what is free at the end of the heap, and large blocks at once; each page that is taken again
// costs more than what is done with it.
void keepFreeMemory() {
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_TOP_PAD, 1 << 20);
}

}  // namespace kesto
