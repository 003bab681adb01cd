// Handles of Windows, which are pointers: what sources that end with _windows share.
#pragma once

#include <cstdint>
#include <string>

namespace kesto {

// Closed at its end.
class Handle {
  public:
    explicit Handle(void* handle) : handle_(handle) {}
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool isGood() const { return handle_ && numberOf(handle_) != -1; }
    void* get() const { return handle_; }

    // Headers that name no system hold a handle as an int: 32 bits of it count.
    static int numberOf(void* handle) { return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)); }
    static void* of(int number) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(number)); }

  private:
    void* handle_;
};

// Throws std::runtime_error: "cannot WHAT: ", and why the system has just failed.
[[noreturn]] void failBySystem(const std::string& what);

}  // namespace kesto
