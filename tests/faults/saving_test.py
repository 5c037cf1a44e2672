#!/usr/bin/env python3
"""Fails, shortens and kills each step of each command of zel that writes a file.

    saving_test.py ZEL SYSCALL_FAULT SAMPLE
"""
import errno
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import unittest

ZEL, FAULT, SAMPLE = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:4])
OLD = b"what was there before\n"
CANNOT_WATCH = 125
KILLED = 128 + 9


class Saving(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = pathlib.Path(folder.name) / "disk"
        self.path.mkdir()
        self.log = self.path.parent / "steps"
        shutil.copy(SAMPLE, self.path / "p.vrdb")
        source = random.Random(1)
        names = [f"area_{i}" for i in range(1, 11)]
        rows = [[source.uniform(6.0, 24.0) for _ in names] for _ in range(400)]
        for name, header, count in (("in.csv", names, 400), ("study.csv", ["a", "y"], 10)):
            rows_here = rows[:count] if count == 400 else [[i, 2 * i + 1] for i in range(count)]
            (self.path / name).write_text("\n".join(
                [",".join(header), *(",".join(map(repr, row)) for row in rows_here)]) + "\n")
        self.sources = self.names()

    def names(self):
        return {entry.name for entry in self.path.iterdir()}

    def run_with(self, command, step=0, fault="0"):
        (self.path / "out").write_bytes(OLD)
        return subprocess.run([FAULT, str(self.path), str(self.log), str(step), fault, ZEL, *command],
                              cwd=self.path, capture_output=True, timeout=60)

    def check_order(self, command):
        """After a power failure, a disk may hold no more than what was brought to it."""
        steps = [line.split(" ", 1) for line in self.log.read_text().splitlines()]
        rename = next(i for i, (step, _) in enumerate(steps) if step == "rename")
        temporary = steps[rename][1]
        last_write = max(i for i, step in enumerate(steps) if step == ["write", temporary])
        content = steps.index(["fsync", temporary])
        directory = steps.index(["fsync", str(self.path)], rename)
        self.assertTrue(last_write < content < rename < directory, (command, steps))

    def test_a_failing_disk_leaves_the_old_file_or_the_whole_new_one(self):
        disk = f"{self.path}/"
        tables = ["--in", disk + "in.csv", "-o", disk + "out", "--quiet"]
        for command in (
                ["sample", "--scheme", "latin-hypercube-sampling", "--n", "600", "--inputs",
                 "a:0:1,b:0:1", "-o", disk + "out"],
                ["solve", disk + "p.vrdb", *tables, "--errors"],
                ["export", disk + "p.vrdb", "--format", "c", "-o", disk + "out", "--quiet"],
                ["report", disk + "p.vrdb", "-o", disk + "out", "--quiet"],
                ["train", disk + "study.csv", "--inputs", "a", "--responses", "y", "--budget", "0.1",
                 "-o", disk + "out", "--quiet"]):
            with self.subTest(command=command[0]):
                self.meddle(command)

    def meddle(self, command):
        result = self.run_with(command)
        if result.returncode == CANNOT_WATCH:
            self.skipTest("this machine lets nobody watch the calls of a process")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.check_order(command)
        steps = self.log.read_text().splitlines()
        expected = (self.path / "out").read_bytes()
        is_project = command[0] == "train"  # which holds the time of its making

        def is_whole():
            content = (self.path / "out").read_bytes()
            if not is_project or len(content) != len(expected):
                return content == expected
            return subprocess.run([ZEL, "info", self.path / "out"], capture_output=True).returncode == 0

        self.assertTrue(is_whole())
        statuses = set()
        for step, text in enumerate(steps, 1):
            # Reads and what belongs to them: every seventh of many.
            if text.startswith(("read", "open")) and len(steps) > 40 and step % 7 != 0:
                continue
            for fault in (str(errno.EIO), "short", "full", "kill"):
                if fault in ("short", "full") and not text.startswith("write"):
                    continue
                result = self.run_with(command, step, fault)
                statuses.add((text.split()[0], fault, result.returncode))
                where = (command[0], step, text, fault, result.stderr)
                left = self.names() - self.sources - {"out"}
                if fault == "kill":
                    self.assertEqual(result.returncode, KILLED, where)
                    self.assertTrue(is_whole() or (self.path / "out").read_bytes() == OLD, where)
                    self.assertEqual(self.run_with(command).returncode, 0, where)
                    self.assertTrue(is_whole(), where)
                    for name in left & self.names():
                        (self.path / name).unlink()
                    continue
                self.assertEqual(left, set(), where)
                if result.returncode == 0:
                    self.assertTrue(is_whole(), where)
                else:
                    self.assertEqual(result.returncode, 1, where)
                    self.assertEqual((self.path / "out").read_bytes(), OLD, where)
                    self.assertEqual(result.stderr.count(b"\n"), 1, where)
                    self.assertTrue(result.stderr.startswith(b"zel: "), where)
                    self.assertEqual(b"No space left" in result.stderr, fault == "full", where)
        # Each kind was met: a failed write, fsync or rename is told, and a short write is no failure.
        eio = str(errno.EIO)
        self.assertTrue({("write", eio, 1), ("fsync", eio, 1), ("rename", eio, 1),
                         ("write", "short", 0), ("write", "full", 1), ("rename", "kill", KILLED)} <= statuses, statuses)

    def test_closed_descriptors_and_readers_that_leave_are_errors_or_no_matter(self):
        expected = None
        for closed in ([], [0], [2], [0, 2], [1], [0, 1, 2]):
            target = self.path / "out"
            target.write_bytes(OLD)
            result = subprocess.run(
                [ZEL, "solve", SAMPLE, "--in", self.path / "in.csv", "--errors", "-o", target],
                stderr=subprocess.DEVNULL, preexec_fn=lambda: [os.close(number) for number in closed])
            if expected is None:
                expected = target.read_bytes()
            # Messages never stand in a file that got the number of a closed stream.
            refused = 1 in closed
            self.assertEqual(result.returncode, 1 if refused else 0, closed)
            self.assertEqual(target.read_bytes(), OLD if refused else expected, closed)
        with subprocess.Popen([ZEL, "sample", "--scheme", "sobol-sequence", "--n", "200000",
                               "--inputs", "a:0:1"], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE) as process:
            process.stdout.readline()
            process.stdout.close()
            self.assertEqual(process.stderr.read(), b"zel: standard output: Broken pipe\n")
            self.assertEqual(process.wait(), 1)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
