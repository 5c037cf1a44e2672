#!/usr/bin/env python3
"""`zel optimize` beside scipy (SLSQP, trust-constr) and NLopt (SLSQP, MMA, COBYLA, ISRES) on the same
models.

    optimum_yardstick.py ZEL examples/zel_tenbar.vrdb [STARTS]

Problems on the ten-bar truss. The others work on the models that `zel export` writes, from random
starts, in shares of the ranges; of their results those count that keep the limits to 1e-6. NLopt is
Debian's libnlopt0, called without a package of its own. Prints the best objectives and the seconds
that each took, of zel with its start.
"""
import ctypes
import importlib.util
import json
import pathlib
import subprocess
import sys
import tempfile
import time

import numpy
from scipy.optimize import NonlinearConstraint, minimize

# Arguments of zel; from rows (mass, displacement, stresses) the objective, which is minimised, of
# about 1, and what is left of each limit.
PROBLEMS = {
    "least mass": (
        ["--minimize", "mass"],
        lambda r: (r[0] / 1000, [2 - r[1], *(25 - r[2:]), *(25 + r[2:])])),
    "least displacement": (
        ["--minimize", "displacement", "--no-project-limits", "--limit", "mass <= 6000",
         "--limit", "max(abs(stress)) <= 9"],
        lambda r: (r[1], [6 - r[0] / 1000, *(9 - r[2:]), *(9 + r[2:])])),
    "largest stress": (
        ["--maximize", "stress[0]", "--no-project-limits", "--limit", "displacement <= 3",
         "--limit", "mass >= 5000"],
        lambda r: (-r[2], [3 - r[1], r[0] / 1000 - 5])),
}


class NLopt:
    """As much of libnlopt as minimising with bounds and limits takes."""
    FUNCTION = ctypes.CFUNCTYPE(ctypes.c_double, ctypes.c_uint, ctypes.POINTER(ctypes.c_double),
                                ctypes.POINTER(ctypes.c_double), ctypes.c_void_p)

    def __init__(self):
        self.library = ctypes.CDLL("libnlopt.so.0")
        self.library.nlopt_create.restype = ctypes.c_void_p

    def minimize(self, algorithm, start, function, slopes, num_limits, evaluations):
        n, lib = len(start), self.library
        option = ctypes.c_void_p(lib.nlopt_create(
            lib.nlopt_algorithm_from_string(algorithm.encode()), ctypes.c_uint(n)))
        lib.nlopt_set_lower_bounds1(option, ctypes.c_double(0.0))
        lib.nlopt_set_upper_bounds1(option, ctypes.c_double(1.0))

        def wrap(row, sign):
            def call(_, x, gradient, __):
                x = numpy.array(x[:n])
                if gradient:
                    for i, slope in enumerate(sign * slopes(x)[:, row]):
                        gradient[i] = slope
                return sign * function(x)[row]
            return self.FUNCTION(call)
        calls = [wrap(0, 1.0)] + [wrap(1 + k, -1.0) for k in range(num_limits)]
        lib.nlopt_set_min_objective(option, calls[0], None)
        for call in calls[1:]:
            lib.nlopt_add_inequality_constraint(option, call, None, ctypes.c_double(1e-9))
        lib.nlopt_set_xtol_rel(option, ctypes.c_double(1e-10))
        lib.nlopt_set_maxeval(option, evaluations)
        x = (ctypes.c_double * n)(*start)
        least = ctypes.c_double()
        lib.nlopt_optimize(option, x, ctypes.byref(least))
        lib.nlopt_destroy(option)
        return numpy.array(x[:])


def load(zel, project, folder):
    path = pathlib.Path(folder) / "models.py"
    subprocess.run([zel, "export", project, "--format", "python", "--quiet", "-o", path], check=True)
    found = importlib.util.spec_from_file_location("models", path)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    return module


def main():
    zel, project = sys.argv[1:3]
    num_starts = int(sys.argv[3]) if len(sys.argv) > 3 else 10
    info = json.loads(subprocess.run([zel, "info", project, "--json"], check=True,
                                     capture_output=True).stdout)
    lower = numpy.array([entry["lower"] for entry in info["inputs"]])
    upper = numpy.array([entry["upper"] for entry in info["inputs"]])
    n = len(lower)
    nlopt = NLopt()
    with tempfile.TemporaryDirectory() as folder:
        predict = load(zel, project, folder).predict
    for name, (arguments, columns) in PROBLEMS.items():
        cache = {}  # the last point: methods ask for each limit alone

        def rows(x):  # of shares of the ranges; differences step over the bounds by a hair
            predicted = numpy.asarray(predict(lower + numpy.clip(x, 0, 1) * (upper - lower)))
            return numpy.array([numpy.concatenate([[f], limits])
                                for f, limits in map(columns, predicted)])

        def kept(key, x, work):
            if key not in cache or not numpy.array_equal(cache[key][0], x):
                cache[key] = x.copy(), work(x)
            return cache[key][1]

        def values(x):
            return kept("f", x, lambda at: rows(at[None])[0])

        def slopes(x):
            def work(at):
                step = numpy.where(at > 0.5, -1e-6, 1e-6)
                return (rows(at + numpy.diag(step)) - values(at)) / step[:, None]
            return kept("df", x, work)

        begin = time.perf_counter()
        ours = json.loads(subprocess.run([zel, "optimize", project, *arguments, "--json"],
                                         check=True, capture_output=True).stdout)
        seconds = time.perf_counter() - begin
        print(f"{name}\n  zel optimize        "
              f"{abs(ours['objective']['value']) / (1000 if 'mass' in name else 1):12.7f}  "
              f"{seconds:8.3f} s")
        starts = numpy.random.default_rng(1).uniform(size=(num_starts, n))
        num_limits = len(values(starts[0])) - 1

        def by_scipy(method, start):
            if method == "SLSQP":
                limits = {"type": "ineq", "fun": lambda x: values(x)[1:],
                          "jac": lambda x: slopes(x)[:, 1:].T}
            else:
                limits = NonlinearConstraint(lambda x: values(x)[1:], 0.0, numpy.inf,
                                             jac=lambda x: slopes(x)[:, 1:].T)
            return minimize(lambda x: values(x)[0], start, method=method, constraints=limits,
                            jac=lambda x: slopes(x)[:, 0], bounds=[(0.0, 1.0)] * n, tol=1e-10).x

        methods = {
            "scipy SLSQP": (num_starts, lambda x: by_scipy("SLSQP", x)),
            "scipy trust-constr": (min(num_starts, 2), lambda x: by_scipy("trust-constr", x)),
            **{f"NLopt {kind[3:]}": (min(num_starts, most), lambda x, kind=kind, limit=limit:
                                     nlopt.minimize(kind, x, values, slopes, num_limits, limit))
               for kind, most, limit in [("LD_SLSQP", num_starts, 500), ("LD_MMA", 2, 200),
                                         ("LN_COBYLA", 2, 1000), ("GN_ISRES", 1, 5000)]}}
        for method, (count, search) in methods.items():
            begin = time.perf_counter()
            found = []
            for start in starts[:count]:
                end = values(numpy.clip(search(start), 0.0, 1.0))
                if end[1:].min() >= -1e-6:
                    found.append(end[0])
            best = f"{abs(min(found)):12.7f}" if found else "        none"
            print(f"  {method:18}  {best}  {time.perf_counter() - begin:8.3f} s, "
                  f"{len(found)} of {count} starts keep the limits")


if __name__ == "__main__":
    main()
