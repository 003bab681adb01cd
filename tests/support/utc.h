// The engine breaks times down into the process's local calendar; the tests count in UTC.
#ifndef KESTO_TESTS_UTC_H
#define KESTO_TESTS_UTC_H

#include <cstdlib>

inline void useUtc() {
#ifdef _WIN32
    _putenv_s("TZ", "UTC");
#else
    setenv("TZ", "UTC", 1);
#endif
}

#endif
