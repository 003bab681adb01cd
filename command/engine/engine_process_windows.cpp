// Windows cannot copy a process. A child is this program, started again with a hidden argument; it maps a copy of the
// memory that runInCopiedMemory() holds, finds there what it is to do, and does it.
#include <fcntl.h>
#include <fmt/format.h>
#include <io.h>
#include <windows.h>
// After windows.h.
#include <shellapi.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <new>
#include <span>
#include <stdexcept>
#include <system_error>

#include "copied_memory.h"
#include "engine_process.h"
#include "files.h"
#include "platform.h"

namespace kesto {

namespace {

constexpr const wchar_t* kChild = L"--child-process";
constexpr UINT kAborted = 3;     // how abort() ends a process here
constexpr UINT kNoAnswer = 250;  // the parent has not taken it
constexpr UINT kNoCopy = 251;    // the memory of the parent could not be mapped
constexpr DWORD kPipeBytes = 1 << 20;

[[noreturn]] void fail(const char* what) {
    const std::error_code error(static_cast<int>(GetLastError()), std::system_category());
    throw std::runtime_error(fmt::format("cannot {}: {}", what, reasonOf(error)));
}

[[noreturn]] void endProcess(UINT status) {
    TerminateProcess(GetCurrentProcess(), status);
    std::abort();  // never reached
}

void closeHandle(HANDLE& handle) {
    if (handle) CloseHandle(handle);
    handle = nullptr;
}

struct Shared {
    HANDLE section;
    std::byte* address;
};

// What a child is told by the memory that it gets a copy of.
struct Root {
    std::vector<Shared> shared;
    std::vector<HANDLE> bells;
    const ChildWork* work = nullptr;
    HANDLE answer = nullptr;  // the end of a pipe that the child writes to
    HANDLE stop = nullptr;    // an event
    HMODULE program = nullptr;
};

Root& root() {
    if (!copiedRoot()) copiedRoot() = new Root;
    return *static_cast<Root*>(copiedRoot());
}

HANDLE makeSection(std::size_t bytes) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const auto size = static_cast<std::uint64_t>(bytes);
    return CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, static_cast<DWORD>(size >> 32),
                              static_cast<DWORD>(size), nullptr);
}

// In the child --------------------------------------------------------------------------------------------------------

LONG keeping = 0;  // 1 once there is nothing to keep, or somebody keeps it
HANDLE firstThread = nullptr, stopEvent = nullptr;
const ChildWork* childWork = nullptr;

bool mayKeep() {
    return InterlockedExchange(&keeping, 1) == 0;
}

[[noreturn]] void keepResultsAndDie(UINT status) {
    if (mayKeep() && childWork && childWork->keep) childWork->keep();
    endProcess(status);
}

extern "C" void keepAtAbort(int) {
    keepResultsAndDie(kAborted);
}

// Before anybody else sees the fault. No code here handles one.
LONG WINAPI keepAtFault(EXCEPTION_POINTERS* fault) {
    const DWORD code = fault->ExceptionRecord->ExceptionCode;
    switch (code) {
        case EXCEPTION_ACCESS_VIOLATION:
        case EXCEPTION_IN_PAGE_ERROR:
        case EXCEPTION_STACK_OVERFLOW:
        case EXCEPTION_ILLEGAL_INSTRUCTION:
        case EXCEPTION_PRIV_INSTRUCTION:
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
            keepResultsAndDie(code);
        default:
            return EXCEPTION_CONTINUE_SEARCH;
    }
}

// Keeps the results while the thread that makes them stands still, wherever it is.
DWORD WINAPI waitForStop(void*) {
    WaitForSingleObject(stopEvent, INFINITE);
    if (!mayKeep()) return 0;
    SuspendThread(firstThread);
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    GetThreadContext(firstThread, &context);  // returns once it stands still
    if (childWork->keep) childWork->keep();
    endProcess(kAborted);
}

bool writeAll(HANDLE pipe, std::string_view bytes) {
    for (DWORD written = 0; !bytes.empty(); bytes.remove_prefix(written)) {
        const auto count = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kPipeBytes));
        if (!WriteFile(pipe, bytes.data(), count, &written, nullptr)) return false;
    }
    return true;
}

int doWork(void*) {
    // Where it starts a child of its own, the root is for that one.
    const HANDLE answer = root().answer;
    childWork = root().work;
    stopEvent = root().stop;
    if (!childWork->leavesStopping) {
        DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &firstThread, 0, FALSE,
                        DUPLICATE_SAME_ACCESS);
        CreateThread(nullptr, 0, waitForStop, nullptr, 0, nullptr);
    }
    endProcess(writeAll(answer, childWork->run()) ? 0 : kNoAnswer);
}

std::uintptr_t numberIn(const wchar_t* text) {
    return static_cast<std::uintptr_t>(std::wcstoull(text, nullptr, 10));
}

// Its arguments: a section with a copy of the parent's memory, the address and the length of that.
[[noreturn]] void runChild(wchar_t** arguments) {
    const CopiedRange copy{reinterpret_cast<std::byte*>(numberIn(arguments[1])), numberIn(arguments[2])};
    const auto section = reinterpret_cast<HANDLE>(numberIn(arguments[0]));
    if (!MapViewOfFileEx(section, FILE_MAP_COPY, 0, 0, 0, copy.begin)) endProcess(kNoCopy);
    CloseHandle(section);
    // The C library's own words at an abort belong nowhere.
    SetStdHandle(STD_ERROR_HANDLE, nullptr);
    AddVectoredExceptionHandler(1, keepAtFault);
    std::signal(SIGABRT, keepAtAbort);
    runInCopy(
        copy,
        [](void*) {
            if (root().program != GetModuleHandleW(nullptr)) endProcess(kNoCopy);
            for (const Shared& one : root().shared) {
                if (!MapViewOfFileEx(one.section, FILE_MAP_ALL_ACCESS, 0, 0, 0, one.address)) endProcess(kNoCopy);
            }
            return doWork(nullptr);
        },
        nullptr);
    endProcess(kNoCopy);
}

// In the parent -------------------------------------------------------------------------------------------------------

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
        if (!CreatePipe(&out, &in, &inherited, kPipeBytes)) fail("open a pipe");
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
            fail("start a process");
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
    handles.insert(handles.end(), root().bells.begin(), root().bells.end());
    for (const Shared& one : root().shared) {
        handles.push_back(one.section);
    }
    Inheritance inheritance(handles);
    std::vector<wchar_t> program(32768);
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    std::wstring line = std::wstring(L"kesto ") + kChild;
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
    if (!CreateProcessW(program.data(), line.data(), nullptr, nullptr, TRUE, kFlags, nullptr, nullptr,
                        &start.StartupInfo, &started)) {
        fail("start a process");
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

void keepNothingMore() {
    mayKeep();
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
    root().shared.push_back({section, begin_});
}

SharedMemory::~SharedMemory() {
    const auto one = std::find_if(root().shared.begin(), root().shared.end(),
                                  [&](const Shared& shared) { return shared.address == begin_; });
    UnmapViewOfFile(begin_);
    CloseHandle(one->section);
    root().shared.erase(one);
}

void* SharedMemory::takeBytes(std::size_t bytes) {
    const std::size_t length = rounded(bytes);
    if (used_ + length > size_) throw std::bad_alloc();
    void* address = begin_ + used_;
    used_ += length;
    return address;
}

// Whole pages alone: what shares one with other memory stays.
void giveBack(void* memory, std::size_t bytes) {
    constexpr std::uintptr_t kPage = 4096;
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + kPage - 1) / kPage * kPage, last = (begin + bytes) / kPage * kPage;
    if (first < last) {
        VirtualAlloc(static_cast<std::byte*>(memory) + (first - begin), last - first, MEM_RESET, PAGE_READWRITE);
    }
}

namespace {

// Handles of the system have 32 bits that count.
HANDLE handleOf(int number) {
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(number));
}

}  // namespace

// A semaphore that counts the rings.
Bell::Bell() {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE bell = CreateSemaphoreW(&inherited, 0, MAXLONG, nullptr);
    if (!bell) fail("open an event");
    handle_ = static_cast<int>(reinterpret_cast<std::intptr_t>(bell));
    root().bells.push_back(bell);
}

Bell::~Bell() {
    std::erase(root().bells, handleOf(handle_));
    CloseHandle(handleOf(handle_));
}

void Bell::ring() {
    ReleaseSemaphore(handleOf(handle_), 1, nullptr);
}

void Bell::wait() {
    WaitForSingleObject(handleOf(handle_), INFINITE);
}

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
    const HANDLE rings = handleOf(bell.handle_);
    std::vector<HANDLE> waiting{rings};
    for (const ChildProcess* child : children) {
        if (child->system_->child) waiting.push_back(child->system_->child);
    }
    const bool isAll = waiting.size() <= kMost;
    WaitForMultipleObjects(static_cast<DWORD>(std::min(waiting.size(), kMost)), waiting.data(), FALSE,
                           isAll ? static_cast<DWORD>(milliseconds) : kOften);
    while (WaitForSingleObject(rings, 0) == WAIT_OBJECT_0) {
    }
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

std::string ChildProcess::lastWords() const {
    const std::string words = errors_.substr(0, errors_.find_last_not_of('\n') + 1);
    return words.empty() ? fault_ : words;
}

int startProgram(int, char**, int (*program)(int argc, char** argv)) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    for (const int stream : {0, 1, 2}) {
        _setmode(stream, _O_BINARY);  // the same bytes as on other systems
    }
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count == 5 && std::wcscmp(wide[1], kChild) == 0) runChild(wide + 2);
    struct Start {
        int (*program)(int argc, char** argv);
        wchar_t** wide;
        int count;
    } start{program, wide, count};
    const UINT page = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    const int status = runInCopiedMemory(
        [](void* argument) {
            const Start& begun = *static_cast<const Start*>(argument);
            std::vector<std::string> words;
            for (int i = 0; i < begun.count; ++i) {
                words.push_back(std::filesystem::path(begun.wide[i]).string());
            }
            std::vector<char*> pointers;
            for (std::string& word : words) {
                pointers.push_back(word.data());
            }
            pointers.push_back(nullptr);
            return begun.program(begun.count, pointers.data());
        },
        &start);
    std::cout.flush();
    SetConsoleOutputCP(page);
    return status;
}

// It always does.
void keepFreeMemory() {}

void useUtc() {
    _putenv("TZ=UTC");
    _tzset();
}

}  // namespace kesto
