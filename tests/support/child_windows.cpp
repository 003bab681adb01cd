// Windows cannot fork. Instead this program is started again, with the same arguments, to do the same up to the same
// call of runInChild, and to run the body there. Until then it runs no body and prints nowhere.

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "child.h"

namespace {

constexpr int kAborted = 3;  // how abort() ends a process here
constexpr int kThrew = 4;
constexpr int kTookTooLong = 5;
constexpr const char* kVariable = "KESTO_CHILD";  // which call, and the handles of three files

[[noreturn]] void giveUp(const char* what) {
    std::fprintf(stderr, "cannot %s: error %lu\n", what, GetLastError());
    std::abort();
}

// Answer, stdout and stderr of a child: files, because pipes would have to be read while the child writes.
class ChildFile {
  public:
    ChildFile() {
        char folder[MAX_PATH];
        GetTempPathA(sizeof folder, folder);
        const std::string name = folder + std::string("kesto-") + std::to_string(GetCurrentProcessId()) + "-";
        SECURITY_ATTRIBUTES inherited{};
        inherited.nLength = sizeof inherited;
        inherited.bInheritHandle = TRUE;
        // A name may be taken by what a process with the same number left, or is about to give up.
        for (int tries = 0; handle_ == INVALID_HANDLE_VALUE && tries < 1000; ++tries)
            handle_ =
                CreateFileA((name + std::to_string(files_++)).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_DELETE,
                            &inherited, CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (handle_ == INVALID_HANDLE_VALUE) giveUp("create a temporary file");
    }
    ChildFile(const ChildFile&) = delete;
    ChildFile& operator=(const ChildFile&) = delete;
    ~ChildFile() { CloseHandle(handle_); }

    std::string number() const { return std::to_string(reinterpret_cast<std::uintptr_t>(handle_)); }

    // What the child wrote, with the line ends of text.
    std::string content() const {
        std::string text;
        SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
        std::array<char, 65536> buffer;
        for (DWORD n = 0; ReadFile(handle_, buffer.data(), buffer.size(), &n, nullptr) && n > 0;)
            for (DWORD i = 0; i < n; ++i)
                if (buffer[i] != '\r') text += buffer[i];
        return text;
    }

  private:
    static inline int files_ = 0;
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// Waits for the child and gives its exit status.
int statusOf(PROCESS_INFORMATION& child, unsigned seconds) {
    if (WaitForSingleObject(child.hProcess, seconds * 1000) != WAIT_OBJECT_0) {
        TerminateProcess(child.hProcess, kTookTooLong);
        WaitForSingleObject(child.hProcess, INFINITE);
    }
    DWORD status = 0;
    GetExitCodeProcess(child.hProcess, &status);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    return static_cast<int>(status);
}

ChildResult startChild(int call, unsigned seconds) {
    const ChildFile answer;
    const ChildFile out;
    const ChildFile err;
    SetEnvironmentVariableA(
        kVariable, (std::to_string(call) + " " + answer.number() + " " + out.number() + " " + err.number()).c_str());
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION child{};
    // Under load wine now and then cannot start a process at once.
    for (int tries = 0;; ++tries) {
        std::string arguments = GetCommandLineA();
        if (CreateProcessA(nullptr, arguments.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &child))
            break;
        if (GetLastError() != ERROR_INTERNAL_ERROR || tries == 10) giveUp("start this program again");
        Sleep(100);
    }
    SetEnvironmentVariableA(kVariable, nullptr);
    ChildResult result;
    result.status = statusOf(child, seconds);
    result.answer = answer.content();
    result.stdout_ = out.content();
    result.stderr_ = err.content();
    return result;
}

int descriptor(std::uintptr_t handle) {
    return _open_osfhandle(static_cast<std::intptr_t>(handle), _O_BINARY);
}

[[noreturn]] void live(const std::function<std::string()>& body, std::uintptr_t answer, std::uintptr_t out,
                       std::uintptr_t err) {
    std::fflush(stdout);
    std::fflush(stderr);
    _dup2(descriptor(out), 1);
    _dup2(descriptor(err), 2);
    std::string text;
    try {
        text = body();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        std::fflush(stderr);
        _exit(kThrew);
    }
    std::FILE* const file = _fdopen(descriptor(answer), "wb");
    if (std::fwrite(text.data(), 1, text.size(), file) != text.size()) std::abort();
    std::fclose(file);
    std::fflush(stdout);
    std::fflush(stderr);
    _exit(0);
}

}  // namespace

bool ChildResult::exited() const {
    return status == 0;
}
bool ChildResult::aborted() const {
    return status == kAborted;
}

std::string ChildResult::describe() const {
    std::string text = status == kTookTooLong ? "took too long" : "exit status " + std::to_string(status);
    if (!stderr_.empty()) text += "; stderr: " + stderr_;
    if (!stdout_.empty()) text += "; stdout: " + stdout_;
    return text;
}

ChildResult runInChild(const std::function<std::string()>& body, unsigned seconds) {
    static int calls = 0;
    const int call = calls++;
    const char* const place = std::getenv(kVariable);
    if (place == nullptr) {
        std::fflush(stdout);
        std::fflush(stderr);
        return startChild(call, seconds);
    }
    int wanted = 0;
    unsigned long long handles[3];
    if (std::sscanf(place, "%d %llu %llu %llu", &wanted, &handles[0], &handles[1], &handles[2]) != 4) std::abort();
    if (call == wanted) live(body, handles[0], handles[1], handles[2]);
    if (call == 0 && (std::freopen("NUL", "w", stdout) == nullptr || std::freopen("NUL", "w", stderr) == nullptr))
        std::abort();
    ChildResult skipped;
    skipped.status = kThrew;  // a caller takes nothing from a child that failed
    return skipped;
}
