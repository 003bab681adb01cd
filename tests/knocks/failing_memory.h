// Memory that fails on demand: every allocation of the engine is counted, and a chosen one is refused.
//
// The program that includes this replaces operator new and, by the linker, the allocation functions of C that the
// engine calls. What the C library allocates for itself is left alone.
#ifndef KESTO_TESTS_KNOCKS_FAILING_MEMORY_H
#define KESTO_TESTS_KNOCKS_FAILING_MEMORY_H

namespace failing_memory {

struct Plan {
    long failAt = 0;  // the first allocation to be refused, counted from 1; 0: none
    bool allLater = false;
};

// Counts and refuses from here on.
void start(Plan plan);
// Ends that; blocks are still accounted for when they are freed.
void stop();

long allocations();  // asked for since the start
long blocks();       // handed out since the start and not yet freed

}  // namespace failing_memory

#endif
