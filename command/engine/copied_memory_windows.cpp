#include <windows.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "copied_memory.h"

namespace {

// Far from where the system puts programs, libraries, heaps and stacks. The stack ends where the heap begins, so that
// what is in use of both is one piece.
constexpr std::uintptr_t kStack = 0x100000000000;
constexpr std::uintptr_t kHeap = kStack + (std::uintptr_t{8} << 20);
constexpr std::uintptr_t kHeapEnd = 0x180000000000;
constexpr std::uintptr_t kShared = 0x200000000000;
constexpr std::size_t kPiece = std::size_t{1} << 16;   // the system maps memory in such pieces
constexpr std::size_t kGrowth = std::size_t{1} << 24;  // taken from the system at once

std::byte* addressOf(std::uintptr_t address) {
    return reinterpret_cast<std::byte*>(address);
}

std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

// A block has a multiple of 16 bytes, of which there are four between two powers of two.
constexpr std::size_t kUnit = 16;
constexpr std::size_t kSmall = 8;  // units, up to which there is each number of them
constexpr std::size_t kSizes = 160;

std::size_t indexOf(std::size_t units) {
    if (units <= kSmall) return units;
    const auto log = static_cast<std::size_t>(std::bit_width(units - 1)) - 1;
    const std::size_t quarter = std::size_t{1} << (log - 2);
    return log * 4 - 4 + (units - (std::size_t{1} << log) + quarter - 1) / quarter;
}

std::size_t unitsAt(std::size_t index) {
    if (index <= kSmall) return index;
    const std::size_t log = (index + 3) / 4, quarters = (index + 3) % 4 + 1;
    return (std::size_t{1} << log) + (quarters << (log - 2));
}

// Before each block.
struct alignas(kUnit) Head {
    std::size_t index;
    std::size_t shift;  // bytes from the head of the block to this one, which repeats it for a greater alignment
};

struct Free {
    Free* next;
};

// At the beginning of the heap. What is freed is kept for blocks of its size.
struct Heap {
    SRWLOCK lock = SRWLOCK_INIT;
    std::byte* end = nullptr;    // of what is in use
    std::byte* taken = nullptr;  // from the system
    std::array<Free*, kSizes> free{};
    std::byte* shared = addressOf(kShared);
    void* root = nullptr;

    // Null when memory runs out.
    void* allocate(std::size_t bytes) {
        const std::size_t index = indexOf((bytes + sizeof(Head) + kUnit - 1) / kUnit);
        AcquireSRWLockExclusive(&lock);
        std::byte* block = nullptr;
        if (Free*& first = free[index]) {
            block = reinterpret_cast<std::byte*>(first) - sizeof(Head);
            first = first->next;
        } else if (grow(unitsAt(index) * kUnit)) {
            block = end;
            end += unitsAt(index) * kUnit;
        }
        ReleaseSRWLockExclusive(&lock);
        if (!block) return nullptr;
        new (block) Head{index, 0};
        return block + sizeof(Head);
    }

    void release(void* memory) {
        std::byte* block = static_cast<std::byte*>(memory) - sizeof(Head);
        block -= reinterpret_cast<const Head*>(block)->shift;
        const std::size_t index = reinterpret_cast<const Head*>(block)->index;
        AcquireSRWLockExclusive(&lock);
        if (block + unitsAt(index) * kUnit == end) {
            end = block;
        } else {
            free[index] = new (block + sizeof(Head)) Free{free[index]};
        }
        ReleaseSRWLockExclusive(&lock);
    }

  private:
    bool grow(std::size_t bytes) {
        if (bytes > kHeapEnd - reinterpret_cast<std::uintptr_t>(end)) return false;
        if (end + bytes <= taken) return true;
        for (const std::size_t more : {kGrowth, kPiece}) {
            const std::size_t piece = roundedUp(static_cast<std::size_t>(end + bytes - taken), more);
            if (!VirtualAlloc(taken, piece, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)) continue;
            taken += piece;
            return true;
        }
        return false;
    }
};

Heap* heap = nullptr;  // what is allocated before it is there, static data, is the process's own

bool isInHeap(const void* memory) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    return address >= kHeap && address < kHeapEnd;
}

void* allocate(std::size_t bytes) {
    void* const memory = heap ? heap->allocate(bytes) : std::malloc(bytes);
    if (!memory) throw std::bad_alloc();
    return memory;
}

}  // namespace

// The stack and its bounds, where the system looks for them when it looks for who handles an exception.
extern "C" int callOnStack(int (*function)(void*), void* argument, void* top);
asm(R"(
    .text
    .globl callOnStack
    .def callOnStack; .scl 2; .type 32; .endef
    .seh_proc callOnStack
callOnStack:
    pushq %rbp
    .seh_pushreg %rbp
    movq %rsp, %rbp
    .seh_setframe %rbp, 0
    .seh_endprologue
    movq %rcx, %rax
    movq %rdx, %rcx
    leaq -32(%r8), %rsp
    call *%rax
    movq %rbp, %rsp
    popq %rbp
    ret
    .seh_endproc
)");

namespace kesto {

namespace {

// The rest of the range stays the system's: what overflows the stack goes there.
int runOnStack(std::byte* begin, std::byte* end, int (*function)(void* argument), void* argument) {
    constexpr std::size_t kDeallocationStack = 0x1478;  // in the block of the thread
    NT_TIB* block = nullptr;                            // whose own address is in it
    asm("movq %%gs:0x30, %0" : "=r"(block));
    NT_TIB& thread = *block;
    const NT_TIB old = thread;
    auto& lowest = *reinterpret_cast<std::byte**>(reinterpret_cast<std::byte*>(&thread) + kDeallocationStack);
    std::byte* const oldLowest = lowest;
    // Handlers of frames on the other stack, in a list that 64-bit Windows leaves empty and wine uses: none is ours.
    thread.ExceptionList = reinterpret_cast<decltype(thread.ExceptionList)>(~std::uintptr_t{0});
    thread.StackBase = end;
    thread.StackLimit = begin;
    lowest = begin;
    const int status = callOnStack(function, argument, end);
    thread.ExceptionList = old.ExceptionList;
    thread.StackBase = old.StackBase;
    thread.StackLimit = old.StackLimit;
    lowest = oldLowest;
    return status;
}

void takeMemory(std::byte* begin, const std::byte* end) {
    if (!VirtualAlloc(begin, static_cast<std::size_t>(end - begin), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)) {
        throw std::bad_alloc();
    }
}

}  // namespace

int runInCopiedMemory(int (*function)(void* argument), void* argument) {
    std::byte* const begin = addressOf(kHeap);
    std::byte* const taken = begin + roundedUp(sizeof(Heap), kPiece);
    takeMemory(addressOf(kStack), taken);
    heap = new (begin) Heap;
    heap->end = begin + roundedUp(sizeof(Heap), kUnit);
    heap->taken = taken;
    return runOnStack(addressOf(kStack), begin, function, argument);
}

// The caller's frame is above this one.
CopiedRange copiedRange() {
    const auto frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    std::byte* const begin = addressOf(frame / kPiece * kPiece);
    return {begin, roundedUp(static_cast<std::size_t>(heap->end - begin), kPiece)};
}

int runInCopy(const CopiedRange& copy, int (*function)(void* argument), void* argument) {
    heap = reinterpret_cast<Heap*>(addressOf(kHeap));
    heap->lock = SRWLOCK_INIT;
    heap->taken = copy.begin + copy.bytes;
    takeMemory(addressOf(kStack), copy.begin);
    return runOnStack(addressOf(kStack), copy.begin, function, argument);
}

void*& copiedRoot() {
    return heap->root;
}

std::byte* addressToShare(std::size_t bytes) {
    std::byte* const address = heap->shared;
    heap->shared += roundedUp(bytes, kPiece);
    return address;
}

}  // namespace kesto

// All others call these.
void* operator new(std::size_t bytes) {
    return allocate(bytes);
}

void operator delete(void* memory) noexcept {
    if (isInHeap(memory)) {
        heap->release(memory);
    } else {
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

void* operator new(std::size_t bytes, std::align_val_t alignment) {
    const auto unit = std::max(static_cast<std::size_t>(alignment), kUnit);
    if (!heap) throw std::bad_alloc();
    auto* const block = static_cast<std::byte*>(allocate(bytes + unit));
    auto* const memory = addressOf(roundedUp(reinterpret_cast<std::uintptr_t>(block), unit));
    if (memory != block) new (memory - sizeof(Head)) Head{0, static_cast<std::size_t>(memory - block)};
    return memory;
}

void operator delete(void* memory, std::align_val_t) noexcept {
    operator delete(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    operator delete(memory);
}
