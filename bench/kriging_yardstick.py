"""A whole anisotropic kriging fit, 500 designs of 5 inputs, beside scikit-learn's search for the same
parameters: a factor, a length for each input and noise, from one start. Processor time of the fastest
of some rounds, one thread each.

    python3 bench/kriging_yardstick.py build/release/bench/kriging_bench
"""

import json
import os
import subprocess
import sys
import time
import warnings

os.environ["OPENBLAS_NUM_THREADS"] = "1"  # before NumPy

import numpy as np  # noqa: E402
from sklearn.gaussian_process import GaussianProcessRegressor  # noqa: E402
from sklearn.gaussian_process.kernels import RBF, ConstantKernel, WhiteKernel  # noqa: E402

DESIGNS, INPUTS, ROUNDS = 500, 5, 5


def ours():
    """Milliseconds of the program's fit."""
    out = subprocess.run(
        [sys.argv[1], "--benchmark_filter=^Fit/Anisotropic$", "--benchmark_format=json",
         f"--benchmark_repetitions={ROUNDS}"], check=True, capture_output=True, text=True,
        env={**os.environ, "ZELSOLVER_NUM_THREADS": "1"}).stdout
    return min(run["cpu_time"] for run in json.loads(out)["benchmarks"]
               if run["run_type"] == "iteration")


def peers():
    points = np.random.default_rng(1).uniform(-1, 1, (DESIGNS, INPUTS))
    values = np.sin(3 * points.sum(axis=1))
    kernel = ConstantKernel(1.0) * RBF(np.ones(INPUTS)) + WhiteKernel(1e-3, (1e-6, 1.0))
    best = float("inf")
    for _ in range(ROUNDS):
        start = time.process_time()
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")  # a parameter at its bound is no news here
            GaussianProcessRegressor(kernel, normalize_y=True).fit(points, values)
        best = min(best, time.process_time() - start)
    return best * 1e3


def main():
    peer, own = peers(), ours()
    print(f"scikit-learn  {peer:6.1f} ms\nzelsolver     {own:6.1f} ms  {own / peer:5.2f}")


main()
