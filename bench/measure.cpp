#include "measure.h"

#include <malloc.h>
#include <time.h>

#include <fstream>
#include <string>

namespace {

double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// A line of the kernel's account of this process, in bytes.
double bytesOf(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0.0;
        if (word == name + ":" && status >> kilobytes) return 1024.0 * kilobytes;
    }
    return 0.0;
}

double resident() {
    malloc_trim(0);
    return bytesOf("VmRSS");
}

}  // namespace

Stopwatch::Stopwatch() : begin_(now()) {}

double Stopwatch::seconds() const {
    return now() - begin_;
}

MemoryWatch::MemoryWatch() : begin_(resident()) {
    std::ofstream("/proc/self/clear_refs") << "5";  // puts the peak back to what is held
}

double MemoryWatch::held() const {
    return resident() - begin_;
}

double MemoryWatch::peak() const {
    return bytesOf("VmHWM") - begin_;
}
