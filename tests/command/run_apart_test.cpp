// Work in a process of its own: what it throws, how it dies, and when it is ended.
#include "run_apart.h"

#include <gtest/gtest.h>

#include <csignal>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

using namespace std::chrono_literals;
using kesto::runApart;

std::string errorOf(const std::function<void()>& work) {
    try {
        runApart("cannot read x", 1s, work);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(RunApart, PassesOnHowItEnded) {
    EXPECT_EQ(errorOf([] {}), "");
    EXPECT_EQ(errorOf([] { throw std::runtime_error("x has no end"); }), "x has no end");
    EXPECT_EQ(errorOf([] { throw std::bad_alloc(); }), "cannot read x: memory ran out");
    EXPECT_EQ(errorOf([] { std::raise(SIGSEGV); }),
              "cannot read x: the process that tried it ended by signal 11 (Segmentation fault)");
    EXPECT_EQ(errorOf([] {
                  for (;;)
                      std::this_thread::sleep_for(1s);
              }),
              "cannot read x: the process that tried it did not end within 1 s");
}

TEST(RunApart, BringsTheAnswer) {
    EXPECT_EQ(kesto::answerApart("cannot read x", 1s, [] { return std::string("!\n="); }), "!\n=");
    EXPECT_EQ(kesto::answerApart("cannot read x", 1s, [] { return std::string(); }), "");
    const std::string large(3'000'000, 'x');
    EXPECT_EQ(kesto::answerApart("cannot read x", 10s, [&] { return large; }), large);
}

}  // namespace
