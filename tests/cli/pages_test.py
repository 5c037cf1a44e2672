#!/usr/bin/env python3
"""The manual page and the bash completion beside what the program's help says.

    pages_test.py ZEL zel.1 zel.bash EXAMPLES
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ZEL, PAGE, COMPLETION, EXAMPLES = (str(pathlib.Path(a).resolve()) for a in sys.argv[1:5])


def run(*command, **options):
    result = subprocess.run(command, capture_output=True, text=True, timeout=60, **options)
    assert result.returncode == 0, (command, result.stdout, result.stderr)
    return result.stdout


def help_of(*command):
    return run(ZEL, *command, "--help")


def options_of(text):
    """All option names of a help text."""
    heads = re.findall(r"^  (-\S+)", text, re.MULTILINE)
    return {name for head in heads for name in head.split(",")}


COMMANDS = re.findall(r"^  (\w+)  ", help_of().split("Subcommands:\n")[1], re.MULTILINE)
HELP = {"": help_of(), **{command: help_of(command) for command in COMMANDS}}


class ManualPage(unittest.TestCase):
    def setUp(self):
        text = re.sub(r".\x08", "", run("mandoc", "-T", "utf8", PAGE))  # no overstriking
        self.sections = dict(re.findall(r"^([A-Z ]+)\n(.*?)(?=^\S|\Z)", text,
                                        re.MULTILINE | re.DOTALL))

    def test_mandoc_finds_no_fault(self):
        lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", PAGE],
                              capture_output=True, text=True, timeout=60)
        self.assertEqual((lint.stdout + lint.stderr, lint.returncode), ("", 0))

    def test_names_every_command_and_option(self):
        self.assertGreaterEqual(set(COMMANDS), {"info", "solve", "eval", "sample", "hash"})
        chapters = dict(re.findall(r"^   zel (\w+)\n(.*?)(?=^   zel|\Z)",
                                   self.sections["COMMANDS"], re.MULTILINE | re.DOTALL))
        self.assertEqual(list(chapters), COMMANDS)
        for command in COMMANDS:
            with self.subTest(command):
                missing = options_of(HELP[command]) - {"-h", "--help"} - set(
                    re.findall(r"(?<![\w-])--?\w[\w-]*", chapters[command]))
                self.assertEqual(missing, set())
                summary = HELP[command].splitlines()[0]
                self.assertIn(summary, " ".join(chapters[command].split()))
        for option in options_of(HELP[""]):
            self.assertRegex(self.sections["OPTIONS"], rf"(?m)^ .*{option}\b")

    def test_its_examples_run(self):
        commands = re.findall(r"^ +(zel .*)", self.sections["EXAMPLES"], re.MULTILINE)
        self.assertGreater(len(commands), 2)
        with tempfile.TemporaryDirectory() as folder:
            for name in ("zel_tenbar.vrdb", "points.csv"):
                shutil.copy(os.path.join(EXAMPLES, name), folder)
            path = f"{os.path.dirname(ZEL)}{os.pathsep}{os.environ['PATH']}"
            for command in commands:
                run("bash", "-c", command, cwd=folder, env={**os.environ, "PATH": path})


class Help(unittest.TestCase):
    def test_says_what_each_option_takes(self):
        for command, text in HELP.items():  # TEXT is what an option without a type name shows
            self.assertNotRegex(text, r"(?m)^  \S+ (TEXT|UINT|INT|FLOAT)\b", command)


class Completion(unittest.TestCase):
    def complete(self, *words, cwd=None):
        """What bash offers for the last word. `=` stands alone, as bash splits words there."""
        words = [part for word in words for part in re.split("(=)", word) if part or word == ""]
        script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '_zel zel "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"; '
                  'for reply in "${COMPREPLY[@]}"; do echo "$reply"; done')
        return run("bash", "--norc", "-c", script, "bash", COMPLETION, "zel", *words,
                   cwd=cwd).splitlines()

    def test_knows_every_command_and_option(self):
        self.assertEqual(self.complete(""), COMMANDS)
        self.assertEqual(self.complete("sa"), ["sample"])
        self.assertEqual(set(self.complete("-")), options_of(HELP[""]))
        for command in COMMANDS:
            with self.subTest(command):
                self.assertEqual(set(self.complete(command, "-")), options_of(HELP[command]))
                self.assertEqual(set(self.complete("--log", command, "-")),
                                 options_of(HELP[command]))
        self.assertEqual(self.complete("solve", "x.vrdb", "--ex"), ["--extrapolate"])

    def test_knows_every_sampling_scheme(self):
        names = re.findall(r"[a-z]+(?:-[a-z]+)*", re.search(r"Schemes, of[^:]*:(.*?)\.",
                                                           HELP["sample"], re.DOTALL)[1])
        self.assertEqual(sorted(self.complete("sample", "--scheme", "")), sorted(names))
        self.assertEqual(self.complete("sample", "--scheme=so"), ["sobol-sequence"])
        self.assertEqual(len(self.complete("sample", "--scheme=")), len(names))

    def test_knows_every_function(self):
        self.assertEqual(self.complete("help", "butter"), ["butterworthFilter"])
        listed = re.findall(r"(?m)^  ([a-z]\w*)", run(ZEL, "functions"))
        self.assertEqual(sorted(self.complete("help", "")), sorted(listed))

    def test_offers_files_by_what_an_option_takes(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("a b.vrdb", "a.csv", "a.txt"):
                pathlib.Path(folder, name).touch()
            pathlib.Path(folder, "a folder").mkdir()
            cases = [
                (["solve", ""], ["a b.vrdb", "a folder"]),
                (["solve", "x.vrdb", "--in", "a"], ["a folder", "a.csv"]),
                (["solve", "x.vrdb", "--out=a."], ["a.csv"]),
                (["sample", "--from", ""], ["a b.vrdb", "a folder"]),
                (["hash", "a."], ["a.csv", "a.txt"]),
                (["solve", "x.vrdb", "--gradients", ""], []),
            ]
            for words, files in cases:
                with self.subTest(words):
                    self.assertEqual(sorted(self.complete(*words, cwd=folder)), files)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
