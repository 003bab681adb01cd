#include <fmt/format.h>
#include <windows.h>

#include <array>
#include <cstdlib>

#include "files.h"
#include "handle_windows.h"
#include "programs.h"

namespace kesto {

namespace {

// A file for what another program reads or writes; gone when it is closed.
HANDLE makeTemporary() {
    std::array<wchar_t, MAX_PATH + 1> folder{}, name{};
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    if (GetTempPathW(folder.size(), folder.data()) == 0 ||
        GetTempFileNameW(folder.data(), L"kes", 0, name.data()) == 0) {
        return INVALID_HANDLE_VALUE;
    }
    return CreateFileW(name.data(), GENERIC_READ | GENERIC_WRITE | DELETE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

std::string readAll(HANDLE file) {
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    std::string text;
    std::array<char, 1 << 16> buffer;
    for (DWORD count = 0; ReadFile(file, buffer.data(), buffer.size(), &count, nullptr) && count > 0;) {
        text.append(buffer.data(), count);
    }
    return text;
}

// Of the folders that PATH names; the current one is none of them.
std::wstring findProgram(const std::string& name) {
    const wchar_t* const folders = _wgetenv(L"PATH");
    std::array<wchar_t, 32768> found{};
    const DWORD length = SearchPathW(folders ? folders : L"", pathOf(name).c_str(), L".exe",
                                     static_cast<DWORD>(found.size()), found.data(), nullptr);
    return {found.data(), length < found.size() ? length : 0};
}

}  // namespace

ProgramRun runProgram(const std::vector<std::string>& arguments, std::string_view input) {
    const std::wstring program = findProgram(arguments.front());
    if (program.empty()) return {};
    const auto fail = [&] { failBySystem(fmt::format("start \"{}\"", arguments[0])); };
    const Handle in(makeTemporary()), out(makeTemporary()), errors(makeTemporary());
    DWORD written = 0;
    if (!in.isGood() || !out.isGood() || !errors.isGood() ||
        !WriteFile(in.get(), input.data(), static_cast<DWORD>(input.size()), &written, nullptr)) {
        fail();
    }
    SetFilePointer(in.get(), 0, nullptr, FILE_BEGIN);
    std::wstring line = L"\"" + program + L"\"";
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        line += L" " + pathOf(arguments[i]).wstring();  // "-Tsvg"
    }
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = in.get();
    start.hStdOutput = out.get();
    start.hStdError = errors.get();
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr,
                        &start, &started)) {
        fail();
    }
    const Handle process(started.hProcess), thread(started.hThread);
    WaitForSingleObject(process.get(), INFINITE);
    DWORD status = 1;
    GetExitCodeProcess(process.get(), &status);
    return {true, status == 0, readAll(out.get()), readAll(errors.get())};
}

std::string_view installGraphviz() {
    return "install Graphviz from graphviz.org and put its folder bin on PATH";
}

}  // namespace kesto
