// Processor time and peak memory of this process.
#ifndef KESTO_BENCH_MEASURE_H
#define KESTO_BENCH_MEASURE_H

#include <cstddef>

// Processor time of the thread, so that other work on the machine does not count.
class Stopwatch {
  public:
    Stopwatch();
    double seconds() const;

  private:
    double begin_;
};

// Memory that the process holds, watched from a point on.
class MemoryWatch {
  public:
    MemoryWatch();
    // Bytes held now, and at most since then, beyond those at the beginning.
    double held() const;
    double peak() const;

  private:
    double begin_;
};

#endif
