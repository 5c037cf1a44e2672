"""What the tests of the program zel share. A test file runs as   X_test.py ZEL LIBZELSOLVER SAMPLE"""
import csv
import io
import pathlib
import random
import subprocess
import sys
import tempfile
import unittest

ZEL, LIBRARY, SAMPLE = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:4])
INPUTS = [f"area_{i}" for i in range(1, 11)]
OUTPUTS = ["mass", "displacement"] + [f"stress[{i}]" for i in range(10)]


def zel(*arguments, stdin=b"", **options):
    return subprocess.run([ZEL, *arguments], input=stdin, capture_output=True, timeout=60, **options)


def designs(n, seed=1):
    source = random.Random(seed)
    return [[source.uniform(6.0, 24.0) for _ in INPUTS] for _ in range(n)]


def table(rows, header=None):
    text = io.StringIO()
    writer = csv.writer(text, lineterminator="\n")
    writer.writerow(INPUTS if header is None else header)
    writer.writerows([[repr(value) for value in row] for row in rows])
    return text.getvalue().encode()


class ProgramTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = pathlib.Path(self.folder.name)

    def records(self, result):
        """The rows of the table that it wrote, by the names of their columns."""
        self.assertEqual(result.returncode, 0, result.stderr)
        return list(csv.DictReader(io.StringIO(result.stdout.decode())))

    def sample(self, *arguments):
        """The names and rows that zel sample writes."""
        result = zel("sample", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        header, *rows = csv.reader(io.StringIO(result.stdout.decode()))
        return header, [[float(cell) for cell in row] for row in rows]

    def refused(self, result, *texts, status=1):
        """One line on standard error that holds the texts, and nothing else."""
        self.assertEqual(result.returncode, status, result.stderr)
        error = result.stderr.decode()
        self.assertEqual(error.count("\n"), 1, error)
        for text in texts:
            self.assertIn(text, error)


def main():
    unittest.main(argv=[sys.argv[0], "-v"])
