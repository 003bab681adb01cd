// Memory that processes share, a bell that wakes them, and what becomes of memory that is no longer needed. The header
// names no system.
#pragma once

#include <cstddef>

namespace kesto {

// Memory that a child process writes and its parent reads.
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

// Wakes processes that share it: each ring lets one of those that wait go on, now or later.
class Bell {
  public:
    Bell();  // throws std::runtime_error
    ~Bell();
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;

    void ring();
    void wait();
    void silence();  // nobody has to be woken for rings until now

  private:
    friend class ChildProcess;
    int handle_;
};

// Gives memory of this process back to the system: nothing reads it any more, though it is not freed. May be called
// from `keep`.
void giveBack(void* memory, std::size_t bytes);

// The same of whole pages.
void giveBackPages(std::byte* first, std::size_t bytes);

// What this process frees from here on stays with it, to be used again.
void keepFreeMemory();

}  // namespace kesto
