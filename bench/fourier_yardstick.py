"""A transform of the prime length 999,983 beside scipy's, which keeps its plans: processor time of
the fastest of some rounds.

    python3 bench/fourier_yardstick.py build/release/bench/signals_bench
"""

import json
import subprocess
import sys
import time

import numpy as np
import scipy.fft

LENGTH, ROUNDS = 999983, 10


def ours(name):
    """Milliseconds of a benchmark of the program."""
    out = subprocess.run(
        [sys.argv[1], f"--benchmark_filter=^{name}/{LENGTH}$", "--benchmark_format=json",
         f"--benchmark_repetitions={ROUNDS}"], check=True, capture_output=True, text=True).stdout
    return min(run["cpu_time"] for run in json.loads(out)["benchmarks"]
               if run["run_type"] == "iteration")


def scipys():
    signal = np.random.default_rng(1).random(LENGTH) + 0j
    best = float("inf")
    for _ in range(ROUNDS):
        start = time.process_time()
        scipy.fft.fft(signal)
        best = min(best, time.process_time() - start)
    return best * 1e3


def main():
    peer = scipys()
    print(f"scipy                 {peer:6.1f} ms")
    for name in ("BM_Dft", "BM_Dft_Committed"):
        value = ours(name)
        print(f"{name:20}  {value:6.1f} ms  {value / peer:5.2f}")


main()
