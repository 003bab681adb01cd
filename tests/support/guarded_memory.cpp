#include "guarded_memory.h"

#include <algorithm>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__)
#define KESTO_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTO_ASAN 1
#endif
#endif
#ifdef KESTO_ASAN
#include <sanitizer/asan_interface.h>
#define KESTO_POISON(place, size) ASAN_POISON_MEMORY_REGION(place, size)
#define KESTO_UNPOISON(place, size) ASAN_UNPOISON_MEMORY_REGION(place, size)
#else
#define KESTO_POISON(place, size) (static_cast<void>(place), static_cast<void>(size))
#define KESTO_UNPOISON(place, size) (static_cast<void>(place), static_cast<void>(size))
#endif

namespace {

constexpr std::size_t kGuard = 64;
constexpr std::byte kPattern{0xA5};

bool intact(const std::byte* from) {
    return std::all_of(from, from + kGuard, [](std::byte b) { return b == kPattern; });
}

}  // namespace

GuardedMemory::~GuardedMemory() {
    for (Block& block : blocks_) {
        KESTO_UNPOISON(block.whole, block.size + 2 * kGuard);
        std::free(block.whole);
    }
}

void* GuardedMemory::allocate(std::size_t size, const std::string& name, bool writable) {
    auto* whole = static_cast<std::byte*>(std::malloc(size + 2 * kGuard));
    std::fill(whole, whole + size + 2 * kGuard, kPattern);
    blocks_.push_back({name, whole, size, writable, {}});
    return whole + kGuard;
}

void GuardedMemory::close() {
    for (Block& block : blocks_) {
        const std::byte* content = block.whole + kGuard;
        block.before.assign(content, content + block.size);
        KESTO_POISON(block.whole, kGuard);
        KESTO_POISON(content + block.size, kGuard);
    }
}

std::string GuardedMemory::open() {
    std::string damage;
    for (Block& block : blocks_) {
        const std::byte* content = block.whole + kGuard;
        KESTO_UNPOISON(block.whole, block.size + 2 * kGuard);
        if (!intact(block.whole)) damage += block.name + ": written in front of it\n";
        if (!intact(content + block.size)) damage += block.name + ": written behind it\n";
        if (!block.writable && !std::equal(block.before.begin(), block.before.end(), content))
            damage += block.name + ": changed, though it is the host's\n";
    }
    return damage;
}
