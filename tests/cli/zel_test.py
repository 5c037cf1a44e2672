#!/usr/bin/env python3
"""Runs the program zel as a user would.   zel_test.py ZEL LIBZELSOLVER SAMPLE"""
import csv
import ctypes
import hashlib
import io
import json
import math
import os
import pathlib
import pty
import random
import subprocess

from program import INPUTS, LIBRARY, OUTPUTS, SAMPLE, ZEL, ProgramTest, designs, main, table, zel

RANDOM = str(pathlib.Path(SAMPLE).with_name("zel_tenbar_random.vrdb"))


def predict(rows):
    """The same predictions straight from the C interface."""
    library = ctypes.CDLL(LIBRARY)
    n = len(rows)
    inputs = (ctypes.c_double * (10 * n))(*[row[i] for i in range(10) for row in rows])
    out = (ctypes.c_double * (12 * n))()
    assert library.dzel2_solve(SAMPLE.encode(), n, inputs, len(inputs), 2, out, len(out)) == 0
    return [[out[k * n + d] for k in range(12)] for d in range(n)]


class Zel(ProgramTest):
    def test_solve_gives_what_the_library_gives_in_blocks_and_any_column_order(self):
        rows = designs(9000)  # more than two blocks
        order = random.Random(3).sample(range(10), 10)
        shuffled = table([[row[i] for i in order] + [0.5] for row in rows],
                         [INPUTS[i] for i in order] + ["not an input"])
        result = zel("solve", SAMPLE, "--in", "-", stdin=shuffled)
        self.assertEqual(result.returncode, 0, result.stderr)
        records = list(csv.reader(io.StringIO(result.stdout.decode())))
        self.assertEqual(records[0], OUTPUTS)
        # The shortest text of a double reads back exactly.
        self.assertEqual([[float(cell) for cell in record] for record in records[1:]], predict(rows))
        self.assertEqual(result.stderr, b"")  # no progress line without a terminal

    def test_solve_adds_what_the_options_ask_for(self):
        result = zel("solve", SAMPLE, "--in", "-", "--criteria", "--density", "--errors",
                     stdin=table(designs(3)))
        records = self.records(result)
        self.assertEqual(len(records), 3)
        for record in records:
            # A criterion's own text, from the columns beside it.
            stress = max(abs(float(record[f"stress[{i}]"])) for i in range(10))
            self.assertAlmostEqual(float(record["stress_limit"]), 25 - stress, delta=1e-9)
            self.assertGreater(float(record["mass:density"]), 0.0)
            self.assertEqual(record["stress[8]:rmse"], "nan")  # thin plate splines know no errors
        # One line for its density, one for its errors.
        self.assertEqual(result.stderr.decode().count("stress[8]"), 2, result.stderr)

    def test_help_explains_each_function_that_is_listed(self):
        groups = {}
        for line in zel("functions").stdout.decode().splitlines():
            if line.startswith("  "):
                self.assertLess(len(line), 110)
                groups[group].append(line.split()[0])
            elif line:
                group = line
                groups[group] = []
        self.assertEqual(groups["Peaks"], ["magpeaks", "maxpeaks", "minpeaks", "peaks"])
        self.assertIn("LINEAR", groups.pop("Constants"))
        names = sum(groups.values(), [])
        self.assertEqual(len(names), len(set(names)))
        for name in names:
            result = zel("help", name)
            self.assertEqual((result.returncode, result.stderr), (0, b""), name)
            self.assertTrue(result.stdout.decode().startswith(name + "("), name)
            self.assertNotRegex(result.stdout.decode(), "<[a-z/]")  # markup
        self.assertIn("FORWARD, BACKWARD", zel("help", "derive").stdout.decode())
        self.refused(zel("help", "x" * 100000), "the functions are")

    def test_values_out_of_bounds_are_named_unless_extrapolated(self):
        rows = designs(5000)
        rows[4500][2] = 99.5
        points = self.path / "points.csv"
        points.write_bytes(table(rows))
        result = zel("solve", SAMPLE, "--in", str(points))
        self.refused(result, str(points), "row 4502", '"area_3"', "99.5", "--extrapolate")
        result = zel("solve", SAMPLE, "--in", str(points), "--extrapolate")
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_a_failure_leaves_an_old_result_alone(self):
        old = self.path / "result.csv"
        old.write_text("precious")
        self.refused(zel("solve", SAMPLE, "--in", "-", "--out", str(old), stdin=b"no\n"), "area_1")
        self.assertEqual(old.read_text(), "precious")
        self.assertEqual(os.listdir(self.path), ["result.csv"])
        result = zel("solve", SAMPLE, "--in", "-", "--out", str(old), stdin=table(designs(1)))
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("mass", old.read_text())
        result = zel("solve", SAMPLE, "--in", "-", "--out", str(self.path / "no" / "folder.csv"),
                     stdin=table(designs(1)))
        self.refused(result, "folder.csv")

    def test_output_that_nobody_takes_is_an_error(self):
        reader, broken = os.pipe()
        os.close(reader)
        with open("/dev/full", "wb") as full:
            for output, text in ((full, "No space left"), (broken, "Broken pipe")):
                for arguments in (["solve", SAMPLE, "--in", "-"], ["functions"], ["--help"],
                                  ["solve", "--help"], ["--version"]):
                    with self.subTest(text, arguments=arguments):
                        result = subprocess.run([ZEL, *arguments], input=table(designs(5)),
                                                stdout=output, stderr=subprocess.PIPE, timeout=60)
                        self.refused(result, "standard output", text)
        os.close(broken)

    def test_sample_knows_every_scheme(self):
        counts = {"center-point": 1, "full-factorial": 12 * 12 * 3, "axial-points": 1 + 12 + 12 + 2,
                  "star-points": 1 + 24 + 24 + 2, "central-composite": 7 + 8, "mixed-terms": 3,
                  "koshal-linear": 4, "koshal-quadratic": 10, "box-behnken": 13,
                  "full-combinatorial": 27}
        for scheme in ["latin-hypercube-sampling", "latin-hypercube-sampling-midpoint", "ortho",
                       "sobol", "plain", "fekete", "space", "advanced"]:
            counts[scheme] = 12
        for scheme, count in counts.items():
            with self.subTest(scheme):
                arguments = ["--scheme", scheme, "--n", "12",
                             "--inputs", "x:10:20,y:-1:1,z:{0.1;0.2;0.3}"]
                _, rows = self.sample(*arguments)
                self.assertEqual(len(rows), count)
                for x, y, z in rows:
                    self.assertTrue(10 <= x <= 20 and -1 <= y <= 1)
                    self.assertIn(z, (0.1, 0.2, 0.3))
                self.assertEqual(rows, self.sample(*arguments)[1])
                random_scheme = count == 12 and scheme != "sobol"
                other = self.sample(*arguments, "--seed", "2")[1]
                self.assertEqual(rows != other, random_scheme)
        self.assertEqual(len(self.sample("--scheme", "koshal", "--n", "2",
                                         "--inputs", "x:0:1,y:0:1")[1]), 6)

    def test_sample_of_a_project_can_be_solved(self):
        path = self.path / "sample.csv"
        self.assertEqual(zel("sample", "--scheme", "space", "--n", "200", "--from", SAMPLE,
                             "--out", str(path)).returncode, 0)
        header, *rows = csv.reader(io.StringIO(path.read_text()))
        self.assertEqual(header, INPUTS)
        for column in zip(*rows):  # one value in the middle of each of 200 intervals
            values = sorted(map(float, column))
            steps = [b - a for a, b in zip(values, values[1:])]
            self.assertAlmostEqual(min(steps), max(steps), places=12)
        # The designs of the study do not reach the ends of the inputs.
        outside = [sum(not lower <= float(value) <= upper for value in column) for column, (
            lower, upper) in zip(zip(*rows), self.bounds(SAMPLE))]
        self.assertGreater(sum(outside), 0)
        self.refused(zel("solve", SAMPLE, "--in", str(path)), "is outside")
        self.refused(zel("solve", SAMPLE, "--in", str(path), "--extrapolate"), "range", *(
            f"{name} {count} of 200" for name, count in zip(INPUTS, outside) if count), status=0)

    def bounds(self, project):
        return [(input["lower"], input["upper"])
                for input in json.loads(zel("info", project, "--json").stdout)["inputs"]]

    def test_random_inputs_are_solved_where_their_distributions_reach(self):
        header, rows = self.sample("--scheme", "plain", "--n", "500", "--from", RANDOM)
        outside = [sum(not lower <= value <= upper for value in column)
                   for column, (lower, upper) in zip(zip(*rows), self.bounds(RANDOM))]
        result = zel("solve", RANDOM, "--in", "-", stdin=table(rows, header))
        self.assertEqual(result.stdout.count(b"\n"), 501)
        self.assertNotIn(b"nan", result.stdout)
        self.refused(result, ": ".join(("range of the project's designs", ", ".join(
            f"{name} {count} of 500" for name, count in zip(header, outside) if count))), status=0)
        self.assertEqual(
            zel("solve", RANDOM, "--in", "-", "--quiet", stdin=table(rows, header)).stderr, b"")
        rows[3][header.index("load_inner")] = 161  # 6.1 standard deviations above the mean
        self.refused(zel("solve", RANDOM, "--in", "-", stdin=table(rows, header)), "row 5",
                     '"load_inner"', "161 is outside", "--extrapolate")

    def test_levels_of_random_inputs_are_standard_deviations(self):
        header, (center,) = self.sample("--scheme", "center", "--from", RANDOM)  # of medians
        self.assertAlmostEqual(center[header.index("load_inner")], 100, places=9)
        self.assertAlmostEqual(center[header.index("modulus")], 1e4 / math.sqrt(1 + 0.05**2),
                               places=6)

    def test_hash_is_the_sha512_and_ties_calls_to_the_file(self):
        digest = hashlib.sha512(pathlib.Path(SAMPLE).read_bytes()).hexdigest()
        self.assertEqual(zel("hash", SAMPLE).stdout.decode(), digest + "\n")
        points = table(designs(1))
        self.assertEqual(zel("solve", SAMPLE, "--in", "-", "--hash", digest, stdin=points).returncode, 0)
        result = zel("solve", SAMPLE, "--in", "-", "--hash", "0" * 128, stdin=points)
        self.refused(result, SAMPLE, "Signature is invalid or missing")

    def test_info_shows_models_in_full_behind_the_rest(self):
        text = zel("info", SAMPLE).stdout.decode()
        longer = zel("info", SAMPLE, "--models").stdout.decode()
        self.assertTrue(longer.startswith(text))
        self.assertTrue(longer[len(text):].startswith("\nModels in full\n"))

    def test_info_shows_distributions_and_correlations_of_random_inputs(self):
        lines = zel("info", RANDOM).stdout.decode().splitlines()

        def line(name, word):
            return next(text for text in lines if text.strip().startswith(name) and word in text)

        self.assertIn("100", line("load_outer", "GUMBEL"))
        self.assertIn("Upper bound b 13.5", line("area_7", "TRUNCATEDNORMAL"))
        self.assertIn("0.6", line("load_outer, load_inner", "0.6"))

    def test_help_and_version_are_no_failures(self):
        for arguments in (["--help"], ["solve", "--help"], ["--version"]):
            self.assertEqual(zel(*arguments).returncode, 0)
        self.assertEqual(zel().returncode, 2)

    def test_progress_shows_on_a_terminal(self):
        points = self.path / "points.csv"
        points.write_bytes(table(designs(20000)))
        try:
            controller, terminal = pty.openpty()
        except OSError:
            self.skipTest("no pseudo terminals on this machine")
        subprocess.run([ZEL, "solve", SAMPLE, "--in", str(points), "--out",
                        str(self.path / "out.csv")], stderr=terminal, timeout=60, check=True)
        os.close(terminal)
        seen = os.read(controller, 65536)
        os.close(controller)
        self.assertIn(b"designs", seen)

if __name__ == "__main__":
    main()
