"""zel optimize beside second methods: published optima of trained projects, scipy's front of the truss,
a study that goes on by --next.   optimum_test.py ZEL LIBZELSOLVER SAMPLE"""
import csv
import importlib.util
import io
import json
import math
import unittest

import numpy

from program import SAMPLE, ProgramTest, main, zel


def welded_beam(h, l, t, b):
    """Cost, shear stress, bending stress, deflection and buckling load; see known_programs.cpp."""
    load, length, young, shear = 6000.0, 14.0, 30e6, 12e6
    r = math.sqrt(l * l / 4 + ((h + t) / 2) ** 2)
    polar = 2 * math.sqrt(2) * h * l * (l * l / 12 + ((h + t) / 2) ** 2)
    direct, torsion = load / (math.sqrt(2) * h * l), load * (length + l / 2) * r / polar
    return {"cost": 1.10471 * h * h * l + 0.04811 * t * b * (14 + l),
            "tau": math.sqrt(direct ** 2 + direct * torsion * l / r + torsion ** 2),
            "sigma": 6 * load * length / (b * t * t),
            "deflection": 4 * load * length ** 3 / (young * t ** 3 * b),
            "buckling": 4.013 * young * t * b ** 3 / 6 / length ** 2
                        * (1 - t / (2 * length) * math.sqrt(young / (4 * shear)))}


def spring(d, D, n):
    """Volume and the left sides of the limits; ibid."""
    return {"volume": (n + 2) * D * d * d, "stiffness": D ** 3 * n / (71785 * d ** 4),
            "stress": (4 * D * D - d * D) / (12566 * (D * d ** 3 - d ** 4)) + 1 / (5108 * d * d),
            "surge": 140.45 * d / (D * D * n)}


def pressure_vessel(shell, head, radius, length):
    return {"cost": 0.6224 * shell * radius * length + 1.7781 * head * radius ** 2
                    + 3.1661 * shell ** 2 * length + 19.84 * shell ** 2 * radius,
            "volume": math.pi * radius ** 2 * length + 4 / 3 * math.pi * radius ** 3}


def plates(low, high):
    return "{" + ";".join(str(k / 16) for k in range(low, high + 1)) + "}"


# Function, inputs, limits by name, the published optimum, the discrete inputs.
STUDIES = {
    "welded beam": (welded_beam, "h:0.15:0.4,l:2:8,t:7:10,b:0.18:0.4", {
        "shear": "tau <= 13600", "bending": "sigma <= 30000", "weld": "h <= b",
        "bent": "deflection <= 0.25", "buckles": "buckling >= 6000"}, 1.724852, ""),
    "spring": (spring, "d:0.048:0.06,D:0.3:0.5,n:6:14", {
        "stiff": "stiffness >= 1", "kept": "stress <= 1", "surges": "surge >= 1",
        "outside": "D + d <= 1.5"}, 0.0126652, ""),
    "pressure vessel": (pressure_vessel, f"shell:{plates(10, 18)},head:{plates(5, 10)},"
                        "radius:38:60,length:60:200", {
        "hoop": "shell >= 0.0193*radius", "cap": "head >= 0.00954*radius",
        "holds": "volume >= 1296000"}, 6059.7143, "shell,head"),
}


class Optimum(ProgramTest):
    def run_zel(self, *arguments):
        result = zel(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr.decode())
        return result.stdout.decode()

    def analyse(self, function, points):
        """Rows of a CSV with the values of the function behind the inputs."""
        rows = []
        for row in csv.DictReader(io.StringIO(points)):
            numbers = {name: float(value) for name, value in row.items()}
            rows.append({**numbers, **function(**numbers)})
        return rows

    def train(self, rows, inputs, *arguments):
        text = io.StringIO()
        writer = csv.DictWriter(text, rows[0])
        writer.writeheader()
        writer.writerows(rows)
        (self.path / "t.csv").write_text(text.getvalue())
        self.run_zel("train", str(self.path / "t.csv"), "--inputs", ",".join(inputs), "--responses",
                     ",".join(name for name in rows[0] if name not in inputs), "--quiet", "-o",
                     str(self.path / "t.vrdb"), *arguments)
        return str(self.path / "t.vrdb")

    def test_trained_projects_reach_the_published_optima(self):
        for name, (function, inputs, limits, published, discrete) in STUDIES.items():
            with self.subTest(name):
                points = self.run_zel("sample", "--scheme", "latin-hypercube-sampling", "--n", "150",
                                      "--inputs", inputs, "--seed", "3")
                rows = self.analyse(function, points)
                names = points.splitlines()[0].split(",")
                project = self.train(rows, names, "--budget", "1",
                                     *(["--discrete", discrete] if discrete else []),
                                     *(part for limit, text in limits.items()
                                       for part in ("--criterion", f"{limit}: {text}")))
                objective = list(rows[0])[len(names)]
                found = json.loads(self.run_zel("optimize", project, "--minimize", objective, "--json"))
                exact = function(**found["inputs"])
                for quantity, value in exact.items():
                    # Within what the models' own error tells, four of its standard deviations.
                    error = max(4 * found["errors"][quantity], 1e-9 * abs(value))
                    self.assertAlmostEqual(found["quantities"][quantity], value, delta=error)
                values = {**found["inputs"], **exact}
                for limit, text in limits.items():
                    left, right = text.replace(">=", "<=").split("<=")
                    reserve = eval(right, values) - eval(left, values)
                    if ">=" in text:
                        reserve = -reserve
                    self.assertGreaterEqual(reserve, -4 * found["limits"][limit]["error"] - 1e-9, limit)
                self.assertAlmostEqual(exact[objective], published, delta=0.02 * published)
                if discrete:
                    for plate in discrete.split(","):
                        self.assertEqual(found["inputs"][plate] * 16 % 1, 0.0)

    @unittest.skipUnless(importlib.util.find_spec("scipy"), "needs python3-scipy")
    def test_the_front_of_the_truss_is_that_of_another_method(self):
        from scipy.optimize import minimize
        exported = self.path / "models.py"
        self.run_zel("export", SAMPLE, "--format", "python", "--quiet", "-o", str(exported))
        found = importlib.util.spec_from_file_location("models", exported)
        models = importlib.util.module_from_spec(found)
        found.loader.exec_module(models)
        info = json.loads(self.run_zel("info", SAMPLE, "--json"))
        lower = numpy.array([entry["lower"] for entry in info["inputs"]])
        upper = numpy.array([entry["upper"] for entry in info["inputs"]])

        def values(shares):  # mass and displacement of rows of shares
            return numpy.asarray(models.predict(lower + shares * (upper - lower)))[:, :2] / [1e3, 1.0]

        def slopes(x):
            step = numpy.where(x > 0.5, -1e-5, 1e-5)
            return (values(x + numpy.diag(step)) - values(x[None])) / step[:, None]

        # The least mass for each displacement: SLSQP, from random points and from the last result.
        ends = [values(numpy.full((1, 10), end))[0] for end in (0.0, 1.0)]
        random = numpy.random.default_rng(1)
        front = []
        last = numpy.ones(10)
        for displacement in numpy.linspace(ends[1][1] * 1.001, ends[0][1], 30):
            best = None
            for start in (last, random.uniform(size=10)):
                result = minimize(
                    lambda x: values(x[None])[0, 0], start, jac=lambda x: slopes(x)[:, 0],
                    bounds=[(0.0, 1.0)] * 10, method="SLSQP", constraints={
                        "type": "ineq", "fun": lambda x: displacement - values(x[None])[0, 1],
                        "jac": lambda x: -slopes(x)[:, 1]})
                if displacement - values(result.x[None])[0, 1] > -1e-6:
                    if best is None or result.fun < best.fun:
                        best = result
            if best is not None:
                front.append(values(best.x[None])[0])
                last = best.x
        front = numpy.array(front)
        self.assertGreater(len(front), 25)
        ours = json.loads(self.run_zel("optimize", SAMPLE, "--minimize", "mass", "--minimize",
                                       "displacement", "--no-project-limits", "--json"))["front"]
        ours = numpy.array([[entry["objectives"]["mass"] / 1e3, entry["objectives"]["displacement"]]
                            for entry in ours])
        corner = numpy.array([front[:, 0].max(), front[:, 1].max()])

        def area(points, is_step):  # between a front by ascending mass and the corner
            points = points[numpy.argsort(points[:, 0])]
            widths = numpy.diff(numpy.append(points[:, 0], corner[0]))
            heights = corner[1] - points[:, 1]
            means = heights if is_step else (heights + numpy.append(heights[1:], heights[-1])) / 2
            return (widths * means).sum()

        # Chords of the reference cut nothing off but its bulges.
        self.assertGreater(area(ours, True), 0.99 * area(front, False))
        self.assertLess(area(ours, True), 1.01 * area(front, False))

    def test_a_study_that_goes_on_finds_the_optimum(self):
        # Two minima, the better one at 0.7572 with -6.0207 (A. Forrester, A. Sobester, A. Keane,
        # "Engineering Design via Surrogate Modelling", Wiley 2008).
        def forrester(x):
            return {"y": (6 * x - 2) ** 2 * math.sin(12 * x - 4)}
        rows = self.analyse(forrester, "x\n" + "\n".join(str(k / 6) for k in range(7)) + "\n")
        for _ in range(6):
            project = self.train(rows, ["x"], "--budget", "0.2", "--seed", "2")
            points = self.run_zel("optimize", project, "--minimize", "y", "--next", "2", "--csv", "-")
            for row in self.analyse(forrester, points):
                self.assertTrue(0.0 <= row["x"] <= 1.0)
                self.assertTrue(all(abs(row["x"] - known["x"]) > 1e-6 for known in rows))
                rows.append(row)
        self.assertLess(min(row["y"] for row in rows), -6.0207 + 0.01)


main()
