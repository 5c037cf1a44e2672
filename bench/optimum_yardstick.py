#!/usr/bin/env python3
"""`zel optimize` beside scipy's SLSQP and trust-constr on the same models.

    optimum_yardstick.py ZEL examples/zel_tenbar.vrdb [STARTS]

Both minimise the mass of the ten-bar truss within the limits of the project. scipy works on the
models that `zel export` writes, from random starts; of its results those count that keep the limits
to 1e-6. Prints the least masses and the seconds that each took.
"""
import importlib.util
import json
import pathlib
import subprocess
import sys
import tempfile
import time

import numpy
from scipy.optimize import NonlinearConstraint, minimize


def load(zel, project, folder):
    path = pathlib.Path(folder) / "models.py"
    subprocess.run([zel, "export", project, "--format", "python", "--quiet", "-o", path], check=True)
    found = importlib.util.spec_from_file_location("models", path)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    return module


def main():
    zel, project = sys.argv[1:3]
    num_starts = int(sys.argv[3]) if len(sys.argv) > 3 else 20
    begin = time.perf_counter()
    ours = json.loads(subprocess.run([zel, "optimize", project, "--minimize", "mass", "--json"],
                                     check=True, capture_output=True).stdout)
    print(f"zel optimize    {ours['quantities']['mass']:12.6f}  {time.perf_counter() - begin:8.3f} s")

    info = json.loads(subprocess.run([zel, "info", project, "--json"], check=True,
                                     capture_output=True).stdout)
    lower = numpy.array([entry["lower"] for entry in info["inputs"]])
    upper = numpy.array([entry["upper"] for entry in info["inputs"]])
    with tempfile.TemporaryDirectory() as folder:
        predict = load(zel, project, folder).predict

        def values(x):  # of shares of the ranges; differences step over the bounds by a hair
            row = numpy.asarray(predict(numpy.clip(lower + x * (upper - lower), lower, upper)
                                        .reshape(1, -1))).ravel()
            return row[0] / 1000.0, numpy.concatenate([[2.0 - row[1]], 25.0 - row[2:], 25.0 + row[2:]])

        random = numpy.random.default_rng(1)
        starts = random.uniform(size=(num_starts, len(lower)))
        for method in "SLSQP", "trust-constr":
            begin = time.perf_counter()
            found = []
            count = num_starts if method == "SLSQP" else min(num_starts, 2)
            for start in starts[:count]:
                limits = ({"type": "ineq", "fun": lambda x: values(x)[1]} if method == "SLSQP" else
                          NonlinearConstraint(lambda x: values(x)[1], 0.0, numpy.inf))
                result = minimize(lambda x: values(x)[0], start, method=method, constraints=limits,
                                  bounds=[(0.0, 1.0)] * len(lower), tol=1e-10)
                if values(result.x)[1].min() >= -1e-6:
                    found.append(1000.0 * values(result.x)[0])
            best = f"{min(found):12.6f}" if found else "        none"
            print(f"{method:15} {best}  {time.perf_counter() - begin:8.3f} s, "
                  f"{len(found)} of {count} starts keep the limits")


if __name__ == "__main__":
    main()
