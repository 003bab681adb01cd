#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <new>

#include "child_start_windows.h"
#include "copied_memory.h"
#include "handle_windows.h"
#include "shared_memory.h"

namespace kesto {

Root& root() {
    if (!copiedRoot()) copiedRoot() = new Root;
    return *static_cast<Root*>(copiedRoot());
}

void* makeSection(std::size_t bytes) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const auto size = static_cast<std::uint64_t>(bytes);
    return CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, static_cast<DWORD>(size >> 32),
                              static_cast<DWORD>(size), nullptr);
}

SharedMemory::SharedMemory(std::size_t bytes) : size_(std::max<std::size_t>(bytes, 16)) {
    const HANDLE section = makeSection(size_);
    if (!section) throw std::bad_alloc();
    void* const address = MapViewOfFileEx(section, FILE_MAP_ALL_ACCESS, 0, 0, 0, addressToShare(size_));
    if (!address) {
        CloseHandle(section);
        throw std::bad_alloc();
    }
    begin_ = static_cast<std::byte*>(address);
    root().inherited.push_back({section, begin_});
}

SharedMemory::~SharedMemory() {
    std::erase_if(root().inherited, [&](const Inherited& one) {
        if (one.address != begin_) return false;
        UnmapViewOfFile(begin_);
        CloseHandle(one.handle);
        return true;
    });
}

void giveBackPages(std::byte* first, std::size_t bytes) {
    VirtualAlloc(first, bytes, MEM_RESET, PAGE_READWRITE);
}

// What is freed always stays with the process.
void keepFreeMemory() {}

// A semaphore that counts the rings.
Bell::Bell() {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE bell = CreateSemaphoreW(&inherited, 0, MAXLONG, nullptr);
    if (!bell) failBySystem("open an event");
    handle_ = Handle::numberOf(bell);
    root().inherited.push_back({bell});
}

Bell::~Bell() {
    const HANDLE bell = Handle::of(handle_);
    std::erase_if(root().inherited, [&](const Inherited& one) { return one.handle == bell; });
    CloseHandle(bell);
}

void Bell::ring() {
    ReleaseSemaphore(Handle::of(handle_), 1, nullptr);
}

void Bell::silence() {
    while (WaitForSingleObject(Handle::of(handle_), 0) == WAIT_OBJECT_0) {
    }
}

void Bell::wait() {
    WaitForSingleObject(Handle::of(handle_), INFINITE);
}

}  // namespace kesto
