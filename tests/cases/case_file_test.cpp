// What the reader of case files refuses, and how it says so.

#include "case_file.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

namespace {

// The reader's message; empty when it takes the text.
std::string refusal(const std::string& text) try {
    std::istringstream in(text);
    readCases(in, "some.cases");
    return "";
} catch (const std::runtime_error& error) {
    return error.what();
}

TEST(CaseFile, ACaseMustExpectSomething) {
    const std::string expectsNothing =
        "the case expects nothing: end it with an expect line, or with a run that fails or aborts";
    EXPECT_EQ(refusal("case a junction\ncomponent 6 junction\nrun 1 1\n"), "some.cases:1: " + expectsNothing);
    EXPECT_EQ(refusal("case a junction\ncomponent 6 junction\nrun 1 1 succeeds\n"), "some.cases:1: " + expectsNothing);
    EXPECT_EQ(refusal("case one\nrun 1 1\nexpect CurStep 1\n\ncase two\nset nComps 0\nrun 1 1\nfree\n"),
              "some.cases:5: " + expectsNothing);
}

TEST(CaseFile, WhatCountsAsAnExpectation) {
    for (const std::string last : {"expect CurStep 1", "run 1 1 fails \"text\"", "run 1 1 setup-fails \"text\"",
                                   "run 1 1 aborts \"1==0\" binarytree.cpp"})
        EXPECT_EQ(refusal("case one\nrun 1 1\n" + last + "\n"), "");
}

TEST(CaseFile, FileAndLineOfWhatItCannotRead) {
    EXPECT_EQ(refusal("component 6 junction\n"), "some.cases:1: expected case or network");
    EXPECT_EQ(refusal("case one\n\ncomponent 6 XX\n"), "some.cases:3: expected a number instead of XX");
    EXPECT_EQ(refusal("case one\nuses two\n"), "some.cases:2: no network two");
    EXPECT_EQ(refusal("case one\nrun 1 1\ncomponent 6 junction\n"),
              "some.cases:3: the model is complete once the first operation stands");
    EXPECT_EQ(refusal("case one\nexpect ErrMsg \"text\n"), "some.cases:2: a quote or brace is not closed");
}

}  // namespace
