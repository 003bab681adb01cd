// case_runner [-k TEXT] FILE...     Runs the cases of each file, or those with TEXT in their names.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "case_run.h"
#include "utc.h"

namespace {

// The number of failed cases.
int runFile(const std::string& path, const std::string& part) {
    const CaseFile file = readCaseFile(path);
    int total = 0;
    int failed = 0;
    for (const Case& one : file.cases) {
        if (one.skipped || one.name.find(part) == std::string::npos) continue;
        ++total;
        const std::string differences = runCase(path, one);
        if (differences.empty()) continue;
        ++failed;
        std::printf("FAILED: %s\n%s", one.name.c_str(), differences.c_str());
    }
    std::printf("%s: %d cases, %d failed\n", path.c_str(), total, failed);
    return total == 0 ? 1 : failed;
}

}  // namespace

int main(int argc, char** argv) {
    useUtc();
    std::string part;
    int failed = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "-k" && i + 1 < argc) {
            part = argv[++i];
            continue;
        }
        try {
            failed += runFile(argv[i], part);
        } catch (const std::exception& e) {
            std::printf("%s\n", e.what());
            ++failed;
        }
    }
    return failed == 0 && argc > 1 ? EXIT_SUCCESS : EXIT_FAILURE;
}
