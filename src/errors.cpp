#include "errors.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

[[gnu::format(printf, 2, 0)]] void write(AUEglobals* Globals, const char* format, std::va_list arguments) {
    std::vsnprintf(Globals->ErrMsg, sizeof Globals->ErrMsg, format, arguments);
}

}  // namespace

void report(AUEglobals* Globals, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    write(Globals, format, arguments);
    va_end(arguments);
}

void fail(AUEglobals* Globals, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    write(Globals, format, arguments);
    va_end(arguments);
    Globals->ErrFlag = 1;
}

void error(AUEglobals* Globals, const char* text) {
    fail(Globals, "%s", text);
}

void invariant(bool holds, const char* expression, const char* module, int line) {
    if (holds) return;
    std::fprintf(stderr, "Assertion failed: %s, file %s.cpp, line %d\n", expression, module, line);
    std::fflush(stderr);
    std::abort();
}
