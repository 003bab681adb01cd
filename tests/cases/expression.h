// The formulas in case files: {(1 - 0.1) * 100}.
//
// Numbers are single, and each operation on singles is rounded to single; double(x) widens, an operation with a double
// is double, and the result is rounded to single. Names stand for values that `let` lines have given.
#ifndef KESTO_TESTS_EXPRESSION_H
#define KESTO_TESTS_EXPRESSION_H

#include <map>
#include <string>
#include <string_view>

// Throws std::runtime_error when the text is no formula.
float evaluate(std::string_view text, const std::map<std::string, float>& names);

#endif
