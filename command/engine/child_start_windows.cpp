// What a child does from its start to its end, and what every process does first.
#include <fcntl.h>
#include <io.h>
#include <windows.h>
// After windows.h.
#include <shellapi.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>

#include "child_start_windows.h"
#include "copied_memory.h"
#include "engine_process.h"

namespace kesto {

namespace {

[[noreturn]] void endProcess(UINT status) {
    TerminateProcess(GetCurrentProcess(), status);
    std::abort();  // never reached
}

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

[[noreturn]] void doWork() {
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
        [](void*) -> int {
            if (root().program != GetModuleHandleW(nullptr)) endProcess(kNoCopy);
            for (const Inherited& one : root().inherited) {
                if (!one.address) continue;
                if (!MapViewOfFileEx(one.handle, FILE_MAP_ALL_ACCESS, 0, 0, 0, one.address)) endProcess(kNoCopy);
            }
            doWork();
        },
        nullptr);
    endProcess(kNoCopy);
}

}  // namespace

void keepNothingMore() {
    mayKeep();
}

int startProgram(int, char**, int (*program)(int argc, char** argv)) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    for (const int stream : {0, 1, 2}) {
        _setmode(stream, _O_BINARY);  // the same bytes as on other systems
    }
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count == 5 && std::wcscmp(wide[1], kChildArgument) == 0) runChild(wide + 2);
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

}  // namespace kesto
