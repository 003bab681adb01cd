#include "failing_memory.h"

#include <cstddef>
#include <functional>
#include <new>
#include <unordered_set>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

namespace {

failing_memory::Plan plan;
bool counting = false;
long asked = 0;

template <class T>
struct Untracked {
    using value_type = T;
    Untracked() = default;
    template <class U>
    Untracked(const Untracked<U>&) {}
    T* allocate(std::size_t n) { return static_cast<T*>(__real_malloc(n * sizeof(T))); }
    void deallocate(T* place, std::size_t) { __real_free(place); }
    bool operator==(const Untracked&) const { return true; }
};
using Blocks = std::unordered_set<void*, std::hash<void*>, std::equal_to<>, Untracked<void*>>;

Blocks& handedOut() {
    static Blocks blocks;
    return blocks;
}

bool refuses() {
    if (!counting) return false;
    ++asked;
    return plan.failAt > 0 && (asked == plan.failAt || (plan.allLater && asked > plan.failAt));
}

void* noted(void* block) {
    if (counting && block) handedOut().insert(block);
    return block;
}

void release(void* block) {
    handedOut().erase(block);
    __real_free(block);
}

}  // namespace

namespace failing_memory {

void start(Plan chosen) {
    plan = chosen;
    asked = 0;
    handedOut().clear();
    counting = true;
}
void stop() {
    counting = false;
}
long allocations() {
    return asked;
}
long blocks() {
    return static_cast<long>(handedOut().size());
}

}  // namespace failing_memory

extern "C" {
void* __wrap_malloc(std::size_t size) {
    return refuses() ? nullptr : noted(__real_malloc(size));
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return refuses() ? nullptr : noted(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, std::size_t size) {
    if (refuses()) return nullptr;
    handedOut().erase(block);
    return noted(__real_realloc(block, size));
}
void __wrap_free(void* block) {
    release(block);
}
}

void* operator new(std::size_t size) {
    if (refuses()) throw std::bad_alloc();
    if (void* const block = noted(__real_malloc(size > 0 ? size : 1))) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return refuses() ? nullptr : noted(__real_malloc(size > 0 ? size : 1));
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
