// Windows cannot copy a process. A child is this program, started again with a hidden argument; it maps a copy of the
// memory that runInCopiedMemory() holds, finds there what it is to do, and does it (child_start_windows.cpp).
#include <fmt/format.h>
#include <windows.h>

#include <algorithm>
#include <ctime>
#include <new>
#include <span>
#include <stdexcept>
#include <utility>

#include "child_start_windows.h"
#include "copied_memory.h"
#include "engine_process.h"
#include "handle_windows.h"

namespace kesto {

namespace {

void closeHandle(HANDLE& handle) {
    if (handle) CloseHandle(handle);
    handle = nullptr;
}

// All of its processes end with this one, however it ends.
HANDLE job() {
    static const HANDLE job = [] {
        const HANDLE made = CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits, sizeof limits);
        return made;
    }();
    return job;
}

// What is to be written to it goes to the child.
struct Pipe {
    HANDLE out = nullptr, in = nullptr;

    Pipe() {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        if (!CreatePipe(&out, &in, &inherited, kPipeBytes)) failBySystem("open a pipe");
    }
    ~Pipe() {
        closeHandle(out);
        closeHandle(in);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    // What is there.
    void read(std::string& text) const {
        for (DWORD there = 0; PeekNamedPipe(out, nullptr, 0, nullptr, &there, nullptr) && there > 0;) {
            const std::size_t length = text.size();
            text.resize(length + there);
            DWORD count = 0;
            ReadFile(out, text.data() + length, there, &count, nullptr);
            text.resize(length + count);
        }
    }
};

// The handles that a child inherits, and no others: those of a shell stay its own.
class Inheritance {
  public:
    explicit Inheritance(std::span<HANDLE> handles) {
        SIZE_T bytes = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &bytes);
        memory_.resize(bytes);
        if (!InitializeProcThreadAttributeList(list(), 1, 0, &bytes) ||
            !UpdateProcThreadAttribute(list(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles.data(),
                                       handles.size_bytes(), nullptr, nullptr)) {
            failBySystem("start a process");
        }
    }
    ~Inheritance() { DeleteProcThreadAttributeList(list()); }
    Inheritance(const Inheritance&) = delete;
    Inheritance& operator=(const Inheritance&) = delete;
    LPPROC_THREAD_ATTRIBUTE_LIST list() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data()); }

  private:
    std::vector<std::byte> memory_;
};

// A section with a copy of the memory as it is now.
HANDLE copyOf(const CopiedRange& range) {
    const HANDLE section = makeSection(range.bytes);
    if (!section) throw std::bad_alloc();
    void* const view = MapViewOfFile(section, FILE_MAP_WRITE, 0, 0, 0);
    if (!view) {
        CloseHandle(section);
        throw std::bad_alloc();
    }
    std::copy_n(range.begin, range.bytes, static_cast<std::byte*>(view));
    UnmapViewOfFile(view);
    return section;
}

// Without a console: Ctrl-C is the business of the parent, which tells it.
HANDLE startChild(HANDLE section, const CopiedRange& range, HANDLE errors) {
    std::vector<HANDLE> handles{section, root().answer, root().stop, errors};
    for (const Inherited& one : root().inherited) {
        handles.push_back(one.handle);
    }
    Inheritance inheritance(handles);
    std::vector<wchar_t> program(32768);
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    std::wstring line = std::wstring(L"kesto ") + kChildArgument;
    for (const std::uintptr_t number :
         {reinterpret_cast<std::uintptr_t>(section), reinterpret_cast<std::uintptr_t>(range.begin), range.bytes}) {
        line += L' ' + std::to_wstring(number);
    }
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdOutput = errors;
    start.StartupInfo.hStdError = errors;
    start.lpAttributeList = inheritance.list();
    PROCESS_INFORMATION started{};
    constexpr DWORD kFlags = DETACHED_PROCESS | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT;
    // One in some thousand processes dies under wine 8 before it begins, on a busy machine.
    constexpr int kTries = 3;
    for (int tries = 1; !CreateProcessW(program.data(), line.data(), nullptr, nullptr, TRUE, kFlags, nullptr, nullptr,
                                        &start.StartupInfo, &started);
         ++tries) {
        if (GetLastError() != ERROR_INTERNAL_ERROR || tries == kTries) failBySystem("start a process");
    }
    AssignProcessToJobObject(job(), started.hProcess);
    ResumeThread(started.hThread);
    CloseHandle(started.hThread);
    return started.hProcess;
}

// None of a process that ended by itself.
std::string faultOf(DWORD status) {
    switch (status) {
        case 0:
        case kNoAnswer:
            return {};
        case kAborted:
            return "ended by abort()";
        case kNoCopy:
            return "could not map the memory of its parent";
        case EXCEPTION_ACCESS_VIOLATION:
            return "ended by an access violation";
        case EXCEPTION_STACK_OVERFLOW:
            return "ended by an overflow of its stack";
        default:
            return fmt::format("ended with status {:#x}", status);
    }
}

}  // namespace

struct ChildProcess::System {
    HANDLE child = nullptr;  // null: it has been waited for
    HANDLE stop = nullptr;
    Pipe errors, answer;
    ~System() { closeHandle(stop); }
};

ChildProcess::ChildProcess(const ChildWork& work) : system_(std::make_unique<System>()) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    system_->stop = CreateEventW(&inherited, TRUE, FALSE, nullptr);
    root().work = &work;
    root().answer = system_->answer.in;
    root().stop = system_->stop;
    root().program = GetModuleHandleW(nullptr);
    const CopiedRange range = copiedRange();
    HANDLE section = copyOf(range);
    try {
        system_->child = startChild(section, range, system_->errors.in);
    } catch (const std::exception&) {
        closeHandle(section);
        throw;
    }
    closeHandle(section);
    closeHandle(system_->errors.in);
    closeHandle(system_->answer.in);
}

ChildProcess::~ChildProcess() {
    if (!system_->child) return;
    TerminateProcess(system_->child, kNoAnswer);
    collect();
}

bool ChildProcess::wait(int milliseconds) {
    constexpr DWORD kOften = 10;  // ms: what is in the pipes waits for so long
    if (!system_->child) return false;
    const ULONGLONG begin = GetTickCount64();
    for (;;) {
        system_->errors.read(errors_);
        system_->answer.read(received_);
        const ULONGLONG passed = GetTickCount64() - begin;
        const auto most = milliseconds == kForever ? INFINITE : static_cast<ULONGLONG>(milliseconds);
        const DWORD left = passed < most ? static_cast<DWORD>(most - passed) : 0;
        if (WaitForSingleObject(system_->child, std::min(left, kOften)) == WAIT_OBJECT_0) {
            collect();
            return false;
        }
        if (left == 0) return true;
    }
}

void ChildProcess::waitForAny(const std::vector<const ChildProcess*>& children, Bell& bell, int milliseconds) {
    constexpr std::size_t kMost = MAXIMUM_WAIT_OBJECTS;
    constexpr DWORD kOften = 10;  // ms, where there are more
    const HANDLE rings = Handle::of(bell.handle_);
    std::vector<HANDLE> waiting{rings};
    for (const ChildProcess* child : children) {
        if (child->system_->child) waiting.push_back(child->system_->child);
    }
    const bool isAll = waiting.size() <= kMost;
    WaitForMultipleObjects(static_cast<DWORD>(std::min(waiting.size(), kMost)), waiting.data(), FALSE,
                           isAll ? static_cast<DWORD>(milliseconds) : kOften);
    bell.silence();
}

void ChildProcess::stop() {
    if (system_->child) SetEvent(system_->stop);
}

void ChildProcess::collect() {
    WaitForSingleObject(system_->child, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(system_->child, &status);
    closeHandle(system_->child);
    system_->errors.read(errors_);
    system_->answer.read(received_);
    if (status == 0) answer_ = std::move(received_);
    fault_ = faultOf(status);
}

void useUtc() {
    _putenv("TZ=UTC");
    _tzset();
}

}  // namespace kesto
