"""How many times as fast all cores are as one: wall time of predictions, of `zel solve` and of `zel
train` with ZELSOLVER_NUM_THREADS=1 over that without, runs by turns, the fastest of each. Needs a
machine on which nothing else runs; the last column is the same ratio of the processor time.
Wanted on two cores: 1.85 for predictions, 1.7 for the training.

    LD_LIBRARY_PATH=build/release/src/api:build/release/src/study PYTHONPATH=python \\
        python3 bench/core_ratios.py [ZEL]
"""

import os
import resource
import subprocess
import sys
import tempfile
import time

import numpy as np
import zelsolver

ROUNDS = 7
POINTS = 100_000
TRUSS = os.path.join(os.path.dirname(__file__), "..", "examples", "zel_tenbar.vrdb")
ZEL = sys.argv[1] if len(sys.argv) > 1 else "zel"


def smooth(x):
    return np.sin(4 * x[:, 0]) + x[:, 1] * x[:, 2] + np.exp(x[:, 3]) + (x[:, 4:] ** 2).sum(axis=1)


def write_table(path, x, y=()):
    names = [f"x{k}" for k in range(x.shape[1])] + [f"y{k}" for k in range(len(y))]
    np.savetxt(path, np.column_stack([x, *y]), delimiter=",", header=",".join(names), comments="")


def measure(work):
    """Wall and processor seconds, children included."""
    def processor():
        usages = [resource.getrusage(who) for who in (resource.RUSAGE_SELF,
                                                      resource.RUSAGE_CHILDREN)]
        return sum(usage.ru_utime + usage.ru_stime for usage in usages)
    begin, before = time.perf_counter(), processor()
    work()
    return time.perf_counter() - begin, processor() - before


def report(name, work, rounds=ROUNDS):
    fastest = {1: (np.inf, np.inf), None: (np.inf, np.inf)}
    for _ in range(rounds):
        for threads in fastest:
            zelsolver.set_num_threads(threads)  # in the environment, where children see it
            fastest[threads] = tuple(map(min, fastest[threads], measure(work)))
    (one, one_cpu), (all_, all_cpu) = fastest[1], fastest[None]
    print(f"{name:50} {one:8.3f} s {all_:8.3f} s {one / all_:6.2f} {one_cpu / all_cpu:6.2f}",
          flush=True)


def report_predictions(name, path, response):
    at = np.asfortranarray(np.random.default_rng(2).random((POINTS, 10)))
    with zelsolver.Project(path) as project:
        model = next(each["model"] for each in project.describe()["responses"]
                     if each["name"] == response)
        report(f"{name}, all responses", lambda: project.predict(at, extrapolate=True))
        for kind in (project.errors, project.density, project.gradients):
            report(f"{name}, {kind.__name__} of {model}",
                   lambda kind=kind: kind(at, response, extrapolate=True))


def main():
    print(f"{len(os.sched_getaffinity(0))} cores{'':43}one        all  ratio    cpu")
    random = np.random.default_rng(1)
    with tempfile.TemporaryDirectory() as folder:
        designs, points, path = (os.path.join(folder, name)
                                 for name in ("designs.csv", "points.csv", "study.vrdb"))
        x = random.random((500, 10))
        write_table(designs, x, [smooth(x)])
        write_table(points, random.random((POINTS, 10)))

        def zel(*arguments):
            subprocess.run([ZEL, *arguments, "--quiet"], check=True)

        report("zel train, 500 designs of 10 inputs",
               lambda: zel("train", designs, "--inputs", "x*", "--responses", "y0", "-o", path),
               rounds=2)
        report(f"zel solve, {POINTS:,} designs", lambda: zel(
            "solve", path, "--in", points, "--extrapolate", "-o", path + ".csv"))
        report_predictions("trained", path, "y0")
    report_predictions("truss", TRUSS, "stress[3]")


main()
