// Memory that a child process writes and its parent reads.
#pragma once

#include <cstddef>

namespace kesto {

class SharedMemory {
  public:
    explicit SharedMemory(std::size_t bytes);  // throws std::bad_alloc
    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    // Zero-filled, aligned to 16 bytes. The sum of what is taken must not exceed what was asked for.
    template <class T>
    T* take(std::size_t count) {
        return static_cast<T*>(takeBytes(count * sizeof(T)));
    }
    static constexpr std::size_t rounded(std::size_t bytes) { return (bytes + 15) / 16 * 16; }

  private:
    void* takeBytes(std::size_t bytes);

    std::byte* begin_;
    std::size_t size_;
    std::size_t used_ = 0;
};

}  // namespace kesto
