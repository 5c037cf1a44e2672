#!/usr/bin/env python3
"""The command lines of lines.txt.   lines_test.py ZEL LIBZELSOLVER SAMPLE"""
import pathlib
import re
import shlex

from program import INPUTS, SAMPLE, ProgramTest, main, zel


class Lines(ProgramTest):
    def check(self, arguments, relation, text):
        held = [word for name in INPUTS for word in ("--fix", name + "=10")]
        meant = {"SAMPLE": [SAMPLE], "HELD": held}
        arguments = [meant.get(word, [word]) for word in shlex.split(arguments)]
        result = zel(*sum(arguments, []), cwd=self.path)
        error = result.stderr.decode()
        if relation == "=>":
            self.assertEqual((result.stdout.decode(), error, result.returncode), (text, "", 0))
            return
        self.assertEqual((result.stdout, result.returncode), (b"", 2 if relation == "2>" else 1))
        if relation == "!=>":
            self.assertEqual(error, text)
            return
        if relation == "!>":
            self.assertEqual(error.count("\n"), 1, error)
        for part in text.split(" | "):
            self.assertIn(part, error.splitlines()[0 if relation == "2>" else -1])

    def test_have_the_outcomes_of_the_file(self):
        files, count = set(), 0
        for line in pathlib.Path(__file__).with_name("lines.txt").read_text("utf-8").splitlines():
            if not line or line.startswith("//"):
                continue
            count += 1
            with self.subTest(line):
                left, relation, right = re.fullmatch(r"(.*?) (:=|=>|!=>|!>|\.\.!>|2>) (.*)",
                                                     line).groups()
                for escape, meant in (("\\n", "\n"), ("\\r", "\r"), ("\\t", "\t")):
                    right = right.replace(escape, meant)
                if relation == ":=":
                    files.add(left)
                    (self.path / left).write_text(right.replace("HEADER", ",".join(INPUTS)))
                else:
                    self.check(left, relation, right)
        self.assertGreater(count, 100)
        self.assertEqual({entry.name for entry in self.path.iterdir()}, files)  # nothing else


if __name__ == "__main__":
    main()
