#!/usr/bin/env python3
"""Asks zel sensitivity and zel propagate for what the truss of the sample tells in closed form: its
mass is a sum of areas times lengths, of which those of the diagonals are longer by the root of 2."""
import csv
import io
import json
import math
import pathlib
import statistics
import tempfile

from program import INPUTS, OUTPUTS, SAMPLE, ProgramTest, main, zel

LENGTHS = {name: math.sqrt(2.0) if i >= 6 else 1.0 for i, name in enumerate(INPUTS)}


def cdf(x):
    return statistics.NormalDist().cdf(x)


class Analysis(ProgramTest):
    def document(self, *arguments):
        result = zel(*arguments, "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stderr, b"")
        return json.loads(result.stdout)

    def test_mass_shares_its_variance_by_lengths(self):
        document = self.document("sensitivity", SAMPLE, "--second-order", "--n", "1024",
                                 "--criterion", "twice: 2 * mass")
        self.assertEqual(document["over"], "bounds")
        self.assertEqual(document["evaluations"], 1024 * 22)
        self.assertEqual(document["groups"], [[name] for name in INPUTS])
        self.assertEqual(set(document["quantities"]) - set(OUTPUTS),
                         {"obj_mass", "stress_limit", "displacement_limit", "cost", "cost_per_mass",
                          "twice"})
        for quantity in ("mass", "obj_mass", "twice"):
            mass = document["quantities"][quantity]
            for name in INPUTS:
                share = LENGTHS[name] ** 2 / 14.0
                self.assertAlmostEqual(mass["first"][name], share, delta=5e-3)
                self.assertAlmostEqual(mass["total"][name], share, delta=5e-3)
                self.assertLess(mass["total_low"][name], share)
                self.assertGreater(mass["total_high"][name], share)
            self.assertLess(max(abs(pair["value"]) for pair in mass["second"]), 5e-3)
        self.assertLess(document["quantities"]["mass"]["unexplained"], 1e-3)
        self.assertIsNone(document["quantities"]["twice"]["unexplained"])

    def test_scatter_beyond_the_analysed_designs_is_told(self):
        # Areas were analysed from about 5 to 25: of normal(25, 5) half lies above, less a margin.
        document = self.document("sensitivity", SAMPLE, "--n", "64", "--distribution",
                                 "area_1:normal(12, 0.5)", "--distribution", "area_2:normal(9, 1)")
        self.assertEqual(document["over"], "distributions")  # they are not passed over
        self.assertAlmostEqual(document["quantities"]["mass"]["first"]["area_1"], 0.2, delta=0.1)

        def notes(text):
            return " ".join(self.document("propagate", SAMPLE, "--no-form", "--n", "100",
                                          "--distribution", text)["notes"])
        self.assertRegex(notes("area_1:normal(25, 5)"), r"area_1 lies to 4\d % outside")
        self.assertNotIn("outside", notes("area_1:normal(15, 1)"))

    def test_a_name_that_expressions_cannot_use_is_told_once(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        rows = "".join(f"{i % 5},{i % 3},{i % 5 + 2 * (i % 3)}\n" for i in range(15))
        (folder / "t.csv").write_text('"width [mm]",b,y\n' + rows)
        project = str(folder / "t.vrdb")
        zel("train", str(folder / "t.csv"), "--inputs", "all", "--responses", "y", "--criterion",
            "c: 2*y", "--quiet", "-o", project)
        result = zel("sensitivity", project)
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr.decode().count('"width [mm]"'), 1)

    def test_a_name_of_the_project_is_no_constant(self):
        (self.path / "t.csv").write_text(
            "e,b,y\n" + "".join(f"{i % 5},{i % 3},{i % 5 + 2 * (i % 3)}\n" for i in range(15)))
        project = str(self.path / "t.vrdb")
        zel("train", str(self.path / "t.csv"), "--inputs", "e,b", "--responses", "y", "--quiet",
            "-o", project)
        alone = self.document("optimize", project, "--minimize", "y", "--limit", "e >= 1.5",
                              "--limit", "0.5 <= b", "--quiet")
        self.assertAlmostEqual(alone["quantities"]["y"], 1.5 + 2 * 0.5, delta=1e-6)
        hidden = '"e" is a constant of expressions and hides'
        for arguments in [["optimize", "--minimize", "y + e"],
                          ["optimize", "--minimize", "y", "--limit", "exp(e) <= 1"],
                          ["sensitivity", "--criterion", "c: y <= e"]]:
            self.refused(zel(arguments[0], project, *arguments[1:]), hidden)

    def test_models_without_known_errors_do_not_count_in_the_next_designs(self):
        next_ones = self.document("optimize", SAMPLE, "--next", "2", "--next-by", "error")["next"]
        self.assertGreater(min(design["error"] for design in next_ones), 0.0)

    def test_mass_scatters_with_its_areas(self):
        means = zel("propagate", SAMPLE, "--csv", "-", "--scheme", "sobol", "--quantiles", "0.9",
                    "--distribution", "area_1:normal(10, 0.5)",
                    "--distribution", "area_7:lognormal(mean=12, cov=0.05)", "--fix", "area_2=8")
        self.assertEqual(means.returncode, 0, means.stderr)
        rows = {(row["name"], row["statistic"]): float(row["value"])
                for row in csv.DictReader(io.StringIO(means.stdout.decode()))}
        # Mass of a unit of area of a short bar.
        ratio = rows["mass", "sd"] / math.hypot(0.5, 0.6 * math.sqrt(2.0))
        document = self.document("propagate", SAMPLE, "--distribution", "area_1:normal(10, 0.5)",
                                 "--criterion", f"exact: area_1 <= {10 + 0.5 * 4.5}",
                                 "--criterion", "kept: 0 * area_1 <= 0")
        mass = document["quantities"]["mass"]
        self.assertAlmostEqual(mass["sd"], 0.5 * ratio, delta=0.01 * ratio)
        self.assertLess(mass["sd_low"], 0.5 * ratio)
        self.assertGreater(mass["sd_high"], 0.5 * ratio)
        self.assertEqual(document["inputs"]["area_1"]["distribution"], "NORMAL")
        self.assertEqual(list(document["inputs"]["area_2"]), ["value"])
        limit = document["limits"]["exact"]  # P = 3.4e-6: no design of the sample sees it
        self.assertAlmostEqual(limit["beta"], 4.5, delta=1e-3)
        self.assertEqual(limit["method"], "importance sampling")
        self.assertLess(limit["low"], cdf(-4.5))
        self.assertGreater(limit["high"], cdf(-4.5))
        self.assertAlmostEqual(limit["form"]["design_points"][0]["inputs"]["area_1"], 12.25,
                               delta=1e-3)
        self.assertEqual(limit["warnings"], [])
        self.assertNotIn("form", document["limits"]["kept"])  # it has no surface
        self.assertEqual(document["limits"]["kept"]["probability"], 0)

main()
