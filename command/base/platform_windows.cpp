#include <fcntl.h>
#include <fmt/format.h>
#include <io.h>
#include <windows.h>
// After windows.h.
#include <psapi.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "files.h"
#include "handle_windows.h"
#include "platform.h"

namespace kesto {

namespace {

// Errors of the system under the names that the C library has for them, so that texts are those of other systems.
struct Known {
    DWORD error;
    std::errc name;
};
constexpr std::array kKnown{
    Known{ERROR_FILE_NOT_FOUND, std::errc::no_such_file_or_directory},
    Known{ERROR_PATH_NOT_FOUND, std::errc::no_such_file_or_directory},
    Known{ERROR_INVALID_NAME, std::errc::no_such_file_or_directory},
    Known{ERROR_BAD_NETPATH, std::errc::no_such_file_or_directory},
    Known{ERROR_BAD_NET_NAME, std::errc::no_such_file_or_directory},
    Known{ERROR_ACCESS_DENIED, std::errc::permission_denied},
    Known{ERROR_WRITE_PROTECT, std::errc::read_only_file_system},
    Known{ERROR_DISK_FULL, std::errc::no_space_on_device},
    Known{ERROR_HANDLE_DISK_FULL, std::errc::no_space_on_device},
    Known{ERROR_DIRECTORY, std::errc::not_a_directory},
    Known{ERROR_FILENAME_EXCED_RANGE, std::errc::filename_too_long},
    Known{ERROR_NOT_ENOUGH_MEMORY, std::errc::not_enough_memory},
};

std::error_code errorOf(DWORD error) {
    for (const Known& known : kKnown) {
        if (known.error == error) return std::make_error_code(known.name);
    }
    return {static_cast<int>(error), std::system_category()};
}

bool isHeldElsewhere(const std::error_code& error) {
    return error.category() == std::system_category() &&
           (error.value() == ERROR_SHARING_VIOLATION || error.value() == ERROR_LOCK_VIOLATION);
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE openExisting(const std::string& path, DWORD access) {
    return CreateFileW(pathOf(path).c_str(), access, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                       nullptr);
}

volatile LONG interrupted = 0;  // 0: no request to stop; else the event, plus one

// In a thread of the system's. A console that closes ends the process once this returns, hence it does not: what is
// left of the process's time is for what was computed.
BOOL WINAPI noteInterrupt(DWORD event) {
    if (InterlockedCompareExchange(&interrupted, static_cast<LONG>(event) + 1, 0) != 0) return FALSE;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
    return TRUE;
}

}  // namespace

Handle::~Handle() {
    if (isGood()) CloseHandle(handle_);
}

void failBySystem(const std::string& what) {
    throw std::runtime_error(fmt::format("cannot {}: {}", what, reasonOf(errorOf(GetLastError()))));
}

int terminalColumns(std::FILE* stream) {
    const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleMode(console, &mode) || !GetConsoleScreenBufferInfo(console, &info)) return 0;
    constexpr DWORD kErases = ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING;
    if (!SetConsoleMode(console, mode | kErases)) return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

// The mode is one of few, in ASCII.
std::FILE* openFile(const std::string& path, const char* mode) {
    return _wfopen(pathOf(path).c_str(), std::wstring(mode, mode + std::char_traits<char>::length(mode)).c_str());
}

std::error_code lastError() {
    const int number = errno;
    if (number == EACCES && isHeldElsewhere(errorOf(_doserrno))) return errorOf(_doserrno);
    return {number, std::generic_category()};
}

std::string reasonOf(const std::error_code& error) {
    if (isHeldElsewhere(error)) return "it is open in another program; close it there";
    if (error.category() == std::system_category()) return errorOf(static_cast<DWORD>(error.value())).message();
    return error.message();
}

namespace {

// Those who look into new files, as against viruses, hold them for a moment.
template <class Try>
std::error_code withPatience(const Try& attempt) {
    constexpr int kTries = 20;
    constexpr DWORD kWait = 50;  // ms
    for (int i = 0;; ++i) {
        if (attempt()) return {};
        const DWORD failure = GetLastError();
        if ((failure != ERROR_SHARING_VIOLATION && failure != ERROR_ACCESS_DENIED) || i == kTries)
            return errorOf(failure);
        Sleep(kWait);
    }
}

}  // namespace

std::error_code moveFile(const std::string& from, const std::string& to) {
    const std::filesystem::path source = pathOf(from), target = pathOf(to);
    const std::error_code error = withPatience([&] {
        return MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    });
    if (error != std::errc::permission_denied) return error;
    const std::error_code held = replaceAccess(to);  // a file that is open is told as one without a right
    return isHeldElsewhere(held) ? held : error;
}

// It is held alone for a moment, which fails where anybody has it open.
std::error_code replaceAccess(const std::string& path) {
    return withPatience([&] {
        return Handle(
                   CreateFileW(pathOf(path).c_str(), DELETE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))
            .isGood();
    });
}

std::error_code writeAccess(const std::string& folder) {
    const Handle file(openExisting(folder, FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY));
    return file.isGood() ? std::error_code() : errorOf(GetLastError());
}

// The file system's own log keeps the names in a folder.
std::error_code syncToDisk(const std::string& path) {
    if (std::filesystem::is_directory(pathOf(path))) return {};
    const Handle file(openExisting(path, GENERIC_WRITE));
    return file.isGood() && FlushFileBuffers(file.get()) ? std::error_code() : errorOf(GetLastError());
}

// Nobody else may write to the file as long as this handle, or that of a child, is open; with the last it goes. Its
// holder stands in it.
FileLock::FileLock(const std::string& path) : path_(path) {
    constexpr int kTries = 100;
    constexpr DWORD kWait = 10;  // ms
    const std::filesystem::path name = pathOf(path);
    for (int i = 0;; ++i) {
        const HANDLE file =
            CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                        nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            file_ = Handle::numberOf(file);
            holder_ = static_cast<long>(GetCurrentProcessId());
            const std::string holder = std::to_string(holder_);
            DWORD written = 0;
            if (!WriteFile(file, holder.data(), static_cast<DWORD>(holder.size()), &written, nullptr)) {
                throw std::system_error(errorOf(GetLastError()), path);
            }
            return;
        }
        const DWORD failure = GetLastError();
        if (failure == ERROR_SHARING_VIOLATION) {
            std::array<char, 32> text{};
            DWORD length = 0;
            const Handle other(openExisting(path, GENERIC_READ));
            if (other.isGood()) ReadFile(other.get(), text.data(), text.size() - 1, &length, nullptr);
            holder_ = std::atol(text.data());
            if (holder_ > 0 || i == kTries) return;
        } else if (failure != ERROR_ACCESS_DENIED || i == kTries) {  // it denies access to what is about to go
            throw std::system_error(errorOf(failure), path);
        }
        Sleep(kWait);
    }
}

// The handle is the parent's: its number stands here, and its process is the holder.
void FileLock::hold() {
    const Handle parent(OpenProcess(PROCESS_DUP_HANDLE, FALSE, static_cast<DWORD>(holder_)));
    HANDLE own = nullptr;
    if (!parent.isGood() ||
        !DuplicateHandle(parent.get(), Handle::of(file_), GetCurrentProcess(), &own, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
        throw std::system_error(errorOf(GetLastError()), path_);
    }
}

FileLock::~FileLock() {
    if (file_ >= 0) CloseHandle(Handle::of(file_));
}

bool FileLock::isHeld() const {
    return file_ >= 0;
}

double peakMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.PeakWorkingSetSize);
}

struct InterruptGuard::Before {};

InterruptGuard::InterruptGuard() {
    interrupted = 0;
    SetConsoleCtrlHandler(noteInterrupt, TRUE);
}

InterruptGuard::~InterruptGuard() {
    SetConsoleCtrlHandler(noteInterrupt, FALSE);
}

bool InterruptGuard::wasInterrupted() const {
    return interrupted != 0;
}

// With the status of a program that Ctrl-C has ended: a batch file asks whether it is to go on.
void InterruptGuard::passOn() {
    if (interrupted != 0) ExitProcess(STATUS_CONTROL_C_EXIT);
}

}  // namespace kesto
