// Where the system cannot copy a process, as Windows: memory at addresses that are the same in parent and child, so
// that a child gets a copy of it and all pointers in it stay good. It holds all that the program allocates, and the
// stack of its first thread. What stands outside of it, the program's static data, each process makes for itself.
#pragma once

#include <cstddef>

namespace kesto {

// Takes the memory, and calls the function on the stack in it.
int runInCopiedMemory(int (*function)(void* argument), void* argument);

struct CopiedRange {
    std::byte* begin;
    std::size_t bytes;
};

// What is in use of it: the stack from the caller's frame on, and what was allocated.
CopiedRange copiedRange();

// The same in a child, where a copy is mapped at its address. The stack is what is left below that of the parent.
int runInCopy(const CopiedRange& copy, int (*function)(void* argument), void* argument);

// One pointer that is copied, too, for whoever finds the memory there; null at first.
void*& copiedRoot();

// Addresses for memory that parent and child share, which they have at the same place. Never twice the same.
std::byte* addressToShare(std::size_t bytes);

}  // namespace kesto
