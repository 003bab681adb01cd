// Runs something in a process of its own: the engine's statics live as long as the process, and its invariants end it.
#ifndef KESTO_TESTS_CHILD_H
#define KESTO_TESTS_CHILD_H

#include <functional>
#include <string>

struct ChildResult {
    std::string answer;  // what the function returned
    std::string stdout_;
    std::string stderr_;
    int status = 0;  // as waitpid gives it
    bool exited() const;
    bool aborted() const;
    std::string describe() const;
};

// The child may take `seconds` before it is killed.
ChildResult runInChild(const std::function<std::string()>& body, unsigned seconds = 60);

#endif
