// Memory of the host's arrays, with guard bytes around each: what a library writes beside them is seen, and under the
// address sanitizer what it reads there, too.
#ifndef KESTO_TESTS_GUARDED_MEMORY_H
#define KESTO_TESTS_GUARDED_MEMORY_H

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

class GuardedMemory {
  public:
    GuardedMemory() = default;
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory();

    // A copy of the values that lives as long as this object. `writable`: the library may change it.
    template <class T>
    T* put(const std::vector<T>& values, const std::string& name, bool writable = false) {
        static_assert(std::is_trivially_copyable_v<T>);
        void* place = allocate(values.size() * sizeof(T), name, writable);
        if (!values.empty()) std::memcpy(place, values.data(), values.size() * sizeof(T));
        return static_cast<T*>(place);
    }

    // To be called before and after the library runs. The second says what it damaged: one line each.
    void close();
    std::string open();

  private:
    struct Block {
        std::string name;
        std::byte* whole;
        std::size_t size;
        bool writable;
        std::vector<std::byte> before;
    };
    void* allocate(std::size_t size, const std::string& name, bool writable);

    std::vector<Block> blocks_;
};

#endif
