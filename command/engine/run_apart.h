// Work that may crash, since a library that is not ours reads a file of somebody else: done in a process of its own.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace kesto {

// Throws std::runtime_error with the text of what the work has thrown, or, as "CANNOT: ...", how its process died: by
// itself, or since it took longer than it may. What it writes on stderr follows its end; files that it writes stay.
void runApart(const std::string& cannot, std::chrono::seconds longest, const std::function<void()>& work);

// The same of work that has an answer.
std::string answerApart(const std::string& cannot, std::chrono::seconds longest,
                        const std::function<std::string()>& work);

}  // namespace kesto
