// What parent and child know of each other on Windows, where a child is this program, started again: its arguments,
// what it finds in the memory that it gets a copy of, and how it ends.
#pragma once

#include <cstddef>
#include <vector>

#include "engine_process.h"

namespace kesto {

// Then follow a section with the copy, its address and its length.
constexpr const wchar_t* kChildArgument = L"--child-process";

constexpr unsigned kAborted = 3;     // how abort() ends a process here
constexpr unsigned kNoAnswer = 250;  // the parent has not taken it
constexpr unsigned kNoCopy = 251;    // the memory of the parent could not be mapped

constexpr unsigned long kPipeBytes = 1 << 20;

// Inherited by all children.
struct Inherited {
    void* handle;
    std::byte* address = nullptr;  // of a section: where it is mapped
};

struct Root {
    std::vector<Inherited> inherited;
    const ChildWork* work = nullptr;
    void* answer = nullptr;   // the end of a pipe that the child writes to
    void* stop = nullptr;     // an event
    void* program = nullptr;  // where it stands
};

// Begins the memory that is copied.
Root& root();

// Memory that can be mapped, which children inherit. Null: there is not so much.
void* makeSection(std::size_t bytes);

}  // namespace kesto
