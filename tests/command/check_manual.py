#!/usr/bin/env python3
"""The man page and the completion for bash name each subcommand and each option that --help names, and no others.

usage: check_manual.py KESTO SOURCES"""

import pathlib
import re
import subprocess
import sys
import unittest

KESTO = str(pathlib.Path(sys.argv.pop(1)).resolve())
SOURCES = pathlib.Path(sys.argv.pop(1))
LONG = re.compile(r"(?<![\w-])--[a-z][a-z-]*")


def output_of(*arguments):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=60, check=True).stdout


def subcommands():
    listed = output_of(KESTO, "--help").split("Subcommands:")[1]
    return re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE)


def options_of(*subcommand):
    return set(LONG.findall(output_of(KESTO, *subcommand, "--help")))


def completed(*words):
    """What bash offers in place of the last word."""
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kesto; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    return set(output_of("bash", "-c", script, "bash", str(SOURCES / "completion/kesto.bash"), KESTO, *words).split())


class Manual(unittest.TestCase):
    def test_there_are_subcommands(self):
        self.assertLessEqual({"run", "check", "new", "types"}, set(subcommands()))

    def test_page_names_what_there_is(self):
        page = (SOURCES / "kesto.1").read_text().replace("\\-", "-")
        options = options_of().union(*(options_of(name) for name in subcommands()))
        self.assertEqual(set(LONG.findall(page)), options)
        section = page.split(".SH SUBCOMMANDS")[1].split(".SH ")[0]
        self.assertEqual(sorted(re.findall(r'^\.TP\n\.B[IR]? "?([a-z]+)', section, re.MULTILINE)),
                         sorted(subcommands()))

    def test_completion_offers_what_there_is(self):
        self.assertEqual(completed(""), set(subcommands()) | options_of())
        for name in subcommands():
            self.assertEqual({word for word in completed(name, "-") if word != "-"}, options_of(name), name)

    def test_completion_of_words(self):
        self.assertEqual(completed("ch"), {"check"})
        self.assertEqual(completed("run", "--record", ""), {"all", "none"})
        self.assertEqual(completed("run", "--accept", "no-o"), {"no-output"})
        self.assertNotIn("no-file", completed("check", "--accept", ""))
        self.assertIn("soil_store", completed("types", "so"))
        self.assertEqual(completed("run", "model"), set())  # left to the names of files

    def test_version(self):
        self.assertRegex(output_of(KESTO, "--version"), r"^kesto \d+\.\d+\.\d+\n$")


unittest.main()
