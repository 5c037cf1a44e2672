#!/usr/bin/env python3
"""Trains models with zel train on functions that the test knows, and asks them with zel solve."""
import csv
import io
import math
import os
import pathlib
import pty
import resource
import signal
import statistics
import subprocess
import time

from program import SAMPLE, ZEL, ProgramTest, main, table, zel


class Train(ProgramTest):
    def sample(self, *arguments):
        result = zel("sample", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        header, *rows = csv.reader(io.StringIO(result.stdout.decode()))
        return header, [[float(cell) for cell in row] for row in rows]

    def write(self, header, rows):
        path = self.path / "study.csv"
        with open(path, "w", newline="") as file:
            csv.writer(file).writerows([header, *rows])
        return str(path)

    def train(self, *arguments):
        result = zel("train", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result

    def solve(self, project, header, rows, *arguments):
        result = zel("solve", str(project), "--in", "-", *arguments, stdin=table(rows, header))
        self.assertEqual(result.returncode, 0, result.stderr)
        return list(csv.DictReader(io.StringIO(result.stdout.decode())))

    def names(self):
        return sorted(entry.name for entry in self.path.iterdir())

    def small_table(self):
        return self.write(["x", "z", "e", "load [kN]"],
                          [[i, 3 * i + 1, i % 4, i * i] for i in range(12)])

    def test_an_old_project_is_replaced_only_where_it_is_named(self):
        path = self.small_table()
        columns = ["--inputs", "x", "--responses", "z"]
        project = self.path / "study.vrdb"
        project.write_text("precious")
        self.refused(zel("train", path, *columns), f"{project}: exists already; -o {project}")
        self.refused(zel("train", path, *columns, "-o", path), path, "table itself")
        self.refused(zel("train", path, *columns, "-o", str(self.path)), "is a directory")
        self.refused(zel("train", path, *columns, "-o", str(self.path / "no" / "a.vrdb")),
                     str(self.path / "no" / "a.vrdb"), "No such file")
        self.refused(zel("train", path, *columns, "-o", "/dev/full"), "/dev/full", "regular file")
        text = pathlib.Path(path).read_bytes()
        for output in ([], ["-o", "-"]):
            self.refused(zel("train", "-", *columns, *output, stdin=text), "-o")
        self.assertEqual(project.read_text(), "precious")
        self.assertEqual(self.names(), ["study.csv", "study.vrdb"])
        result = zel("train", "-", *columns, "-o", str(project), stdin=text)
        self.assertEqual(result.returncode, 0, result.stderr)
        answer = self.solve(project, ["x"], [[2.5]])[0]
        self.assertAlmostEqual(float(answer["z"]), 8.5, delta=1e-9)

    def test_criteria_that_cannot_work_are_refused_at_once(self):
        path = self.small_table()
        cases = {
            "2*z": ["no name"],
            ": 2*z": ["no name"],
            "c:": ["c", "lacks"],
            "c: z <=": ["c", "lacks"],
            "c: 2*(z": ["c", "2*(z"],
            "c: 1 <= z <= 2": ["c", "more than once"],
            "c: z < 2": ["c", "true or false", "<="],
            "c: [z, 1] <= 2": ["c", "left side"],
            "c: 2 >= true": ["c", "right side"],
            "c: 2*zz": ['"zz"', 'there are "x", "z"'],
            "c: 2*load[kN]": ['"load [kN]"', "rename"],
            "c: #if z < 0 #then mass #else 1": ['"mass"', 'there are "x", "z"'],
            "c: 1 + e": ['"e"', "constant"],
            "c: sinus(z)": ['no function "sinus"'],
            "c: abs(z, 1, 2)": ["abs"],
            "c: z + $none(1)": ["none"],
            "c: c + 1": ["itself"],
            "z: 2*x": ['"z"', "has this name"],
            "pi: 2*x": ['"pi"', "cannot use this name"],
            "a b: 2*x": ['"a b"', "cannot use this name"],
        }
        for text, parts in cases.items():
            with self.subTest(text):
                self.refused(zel("train", path, "--inputs", "x,e,load [kN]",
                                 "--responses", "z", "--criterion", text), "--criterion", *parts)
        self.refused(zel("train", path, "--inputs", "x", "--responses", "z", "--criterion", "c: d",
                         "--criterion", "d: c"), "itself")
        self.refused(zel("train", path, "--inputs", "x", "--responses", "z", "--criterion", "c: z",
                         "--criterion", "c: x"), "two criteria")
        self.refused(zel("train", path, "--inputs", "x", "--responses", "z", "--criterion",
                         "weight: z", "--criterion", "c: wieght"), 'did you mean "weight"?')
        self.assertEqual(self.names(), ["study.csv"])
        for arguments in (["--inputs", "x"], ["--responses", "z"],
                          ["--inputs", "x", "--responses", "z", "--seed", "-1"]):
            self.assertEqual(zel("train", path, *arguments).returncode, 2)

    def test_a_full_disk_is_named_and_leaves_nothing(self):
        path = self.small_table()
        project = self.path / "study.vrdb"
        project.write_text("precious")
        result = zel("train", path, "--inputs", "x", "--responses", "z", "-o", str(project),
                     preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000)))
        self.refused(result, str(project), "File too large")
        self.assertEqual(self.names(), ["study.csv", "study.vrdb"])
        self.assertEqual(project.read_text(), "precious")
        points = table([[12.0] * 10] * 5, [f"area_{i}" for i in range(1, 11)])
        self.refused(zel("solve", SAMPLE, "--in", "-", "--out", "/dev/full", stdin=points),
                     "/dev/full: No space left")
        link = self.path / "link.csv"
        link.symlink_to("answer.csv")
        (self.path / "answer.csv").write_text("old")
        zel("solve", SAMPLE, "--in", "-", "--out", str(link), stdin=points)
        self.assertTrue(link.is_symlink())
        self.assertIn("mass", (self.path / "answer.csv").read_text())



if __name__ == "__main__":
    main()
