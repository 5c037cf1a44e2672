"""The estimator beside what it is made of, on 100 designs of 5 inputs: a fit beside `zel train` of
the same table by turns, and a prediction of 1,000 rows of a DataFrame; processor time of the
fastest round.

    PYTHONPATH=python python3 bench/estimator.py ZEL
"""

import os
import resource
import subprocess
import sys
import tempfile
import time

import numpy as np
import pandas
import zelsolver

BUDGET, ROUNDS, CALLS = 5.0, 7, 300


def table(n):
    points = np.random.default_rng(1).uniform(size=(n, 5))
    frame = pandas.DataFrame(points, columns=[f"x{i}" for i in range(5)])
    return frame, np.sin(4 * frame["x0"]) + frame["x1"] * frame["x2"]


def seconds(call):
    start = time.process_time()
    call()
    return time.process_time() - start


def seconds_of_program(command):
    def used():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime

    start = used()
    subprocess.run(command, check=True)
    return used() - start


def main():
    X, y = table(100)
    with tempfile.TemporaryDirectory() as folder:
        designs, project = os.path.join(folder, "designs.csv"), os.path.join(folder, "p.vrdb")
        X.assign(y=y).to_csv(designs, index=False)
        command = [sys.argv[1], "train", designs, "--inputs", "all", "--responses", "y", "--budget",
                   str(BUDGET), "--quiet", "--out", project]
        model = zelsolver.Regressor(budget=BUDGET)
        pairs = [(seconds(lambda: model.fit(X, y)), seconds_of_program(command))
                 for _ in range(ROUNDS)]
    fit, train = map(min, zip(*pairs))
    print(f"fit       {fit:8.3f} s, zel train {train:8.3f} s: {fit / train:5.3f}")
    rows, _ = table(1000)
    predict = min(seconds(lambda: model.predict(rows)) for _ in range(CALLS))
    designs = np.asfortranarray(rows)
    solve = min(seconds(lambda: model.project_.predict(designs, extrapolate=True))
                for _ in range(CALLS))
    print(f"predict   {predict * 1e3:8.3f} ms, of an array {solve * 1e3:8.3f} ms: "
          f"{predict / solve:5.3f}")


main()
