#!/usr/bin/env python3
"""Trains models with zel train on functions that the test knows, and asks them with zel solve."""
import csv
import math
import os
import pathlib
import pty
import resource
import signal
import subprocess
import time

from program import SAMPLE, ZEL, ProgramTest, main, table, zel


class Train(ProgramTest):
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
        return self.records(result)

    def names(self):
        return sorted(entry.name for entry in self.path.iterdir())

    def test_polynomials_are_found_exactly_with_criteria_and_failed_designs(self):
        def plane(a, b, mode):
            return 3 + 2 * a - b

        def bowl(a, b, mode):
            return (a - 0.5) ** 2 + a * b + 10 * mode

        inputs = "a:0:1,b:-1:2,noise:5:6,mode:{1;2;4}"
        header, rows = self.sample("--scheme", "latin-hypercube-sampling", "--n", "80",
                                   "--inputs", inputs)
        designs = []
        for i, (a, b, noise, mode) in enumerate(rows):
            failed = {4: "", 9: "failed", 11: "nan"}.get(i)
            designs.append([f"run {i}", a, b, noise, mode, 7, plane(a, b, mode),
                            bowl(a, b, mode) if failed is None else failed])
        path = self.write(["run", *header, "fixed", "plane, y", "bowl"], designs)
        result = self.train(path, "--inputs", "a,b", "--inputs", "noise,mode,fixed",
                            "--responses", '"plane, y",bowl', "--discrete", "mode",
                            "--criterion", "cost: 2*bowl + a", "--criterion", "limit: cost <= 9",
                            "--criterion", "least: bowl >= 10")
        # The notes are there before the long work, the table after it.
        self.assertEqual(result.stderr.decode(), f'zel: {path}: row 6, column "bowl": "" is not a '
                         "number: 3 of 80 designs failed for this response\n")
        summary = result.stdout.decode()
        self.assertIn(f"Wrote {self.path / 'study.vrdb'}", summary)
        plane_line, bowl_line = (next(line for line in summary.splitlines() if name in line)
                                 for name in ("plane, y", "bowl"))
        self.assertIn(" 80 ", plane_line)
        self.assertIn(" 77 ", bowl_line)
        self.assertIn("mode", bowl_line)
        for line in (plane_line, bowl_line):
            self.assertIn("1.0000", line)
            self.assertNotIn("noise", line)

        project = self.path / "study.vrdb"
        info = zel("info", str(project)).stdout.decode()
        for text in ("Inputs (4)", "Responses (2)", "Criteria (3)", "cost", "least"):
            self.assertIn(text, info)
        self.assertNotIn("fixed", info)  # a constant parameter is no input

        _, fresh = self.sample("--scheme", "plain-monte-carlo", "--n", "50", "--seed", "5",
                               "--inputs", inputs)
        answers = self.solve(project, header, fresh, "--criteria", "--extrapolate")
        for (a, b, noise, mode), answer in zip(fresh, answers):
            z = bowl(a, b, mode)
            expected = {"plane, y": plane(a, b, mode), "bowl": z, "cost": 2 * z + a,
                        "limit": 9 - 2 * z - a, "least": z - 10}
            for name, value in expected.items():  # far below what another model would miss
                self.assertAlmostEqual(float(answer[name]), value, delta=1e-7, msg=name)

    def small_table(self):
        return self.write(["x", "z", "e", "load [kN]", "seven"],
                          [[i, 3 * i + 1, i % 4, i * i, 7] for i in range(12)])

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
        result = zel("train", "-", *columns, "-o", str(project), "--quiet", stdin=text)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
        answer = self.solve(project, ["x"], [[2.5]])[0]
        self.assertAlmostEqual(float(answer["z"]), 8.5, delta=1e-9)

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

    def long_table(self):
        """A table whose training takes many seconds."""
        names = [f"x{i}" for i in range(12)]
        _, rows = self.sample("--scheme", "latin-hypercube-sampling", "--n", "300", "--inputs",
                              ",".join(f"{name}:0:1" for name in names))
        designs = [row + [sum(math.sin(3 * x + i) for i, x in enumerate(row))] for row in rows]
        return self.write([*names, "y"], designs), ["--inputs", ",".join(names), "--responses", "y",
                                                    "--anisotropic"]

    def test_an_interruption_ends_at_once_and_leaves_nothing(self):
        path, arguments = self.long_table()
        for number in (signal.SIGINT, signal.SIGTERM):
            with subprocess.Popen([ZEL, "train", path, *arguments], stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE) as process:
                time.sleep(0.5)
                self.assertIsNone(process.poll())
                process.send_signal(number)
                output, error = process.communicate(timeout=20)
            self.assertEqual((process.returncode, output, error),
                             (-number, b"", b"zel: interrupted\n"))
            self.assertEqual(self.names(), ["study.csv"])

        # zel solve, which writes as it goes, has begun its file when it is interrupted.
        answer = self.path / "answer.csv"
        with subprocess.Popen([ZEL, "solve", SAMPLE, "--in", "-", "--out", str(answer)],
                              stdin=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            deadline = time.monotonic() + 20
            while len(self.names()) < 2 and time.monotonic() < deadline:
                time.sleep(0.01)
            self.assertEqual(len(self.names()), 2)
            process.send_signal(signal.SIGINT)
            process.wait(timeout=20)
        self.assertEqual(process.returncode, -signal.SIGINT)
        self.assertEqual(self.names(), ["study.csv"])

    def test_progress_names_the_candidate_on_a_terminal(self):
        path, arguments = self.long_table()
        try:
            controller, terminal = pty.openpty()
        except OSError:
            self.skipTest("no pseudo terminals on this machine")
        with subprocess.Popen([ZEL, "train", path, *arguments], stdout=subprocess.DEVNULL,
                              stderr=terminal) as process:
            os.close(terminal)
            seen = b""
            deadline = time.monotonic() + 20
            while b" left: y: " not in seen and time.monotonic() < deadline:
                seen += os.read(controller, 65536)
            process.send_signal(signal.SIGINT)
            process.wait(timeout=20)
            seen += os.read(controller, 65536)
        os.close(controller)
        self.assertRegex(seen, rb"\r\x1b\[K\[[#.]{20}\] +\d+ %, (\d+ h )?(\d+ min)?( ?\d+ s)? left: y: \w")
        self.assertIn(b"\r\x1b[Kzel: interrupted", seen)


if __name__ == "__main__":
    main()
