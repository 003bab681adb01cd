// Runs one case in a process of its own and says what differs from its expectations.
#ifndef KESTO_TESTS_CASE_RUN_H
#define KESTO_TESTS_CASE_RUN_H

#include <string>

#include "case_file.h"

// Empty when everything came as expected; else lines of the form FILE:LINE: what differs.
std::string runCase(const std::string& path, const Case& one);

#endif
