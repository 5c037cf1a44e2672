"""One design at a time through the Python package: as a dict, and as an array that is used in
place, by turns; processor time of the fastest of some rounds.

    PYTHONPATH=python python3 bench/one_design.py PROJECT
"""

import sys
import time

import numpy as np
import zelsolver

ROUNDS, CALLS = 15, 2000


def seconds(call):
    start = time.process_time()
    for _ in range(CALLS):
        call()
    return (time.process_time() - start) / CALLS


def main():
    with zelsolver.Project(sys.argv[1]) as project:
        design = {name: float(value) for name, value in project.reference.items()}
        array = np.array([list(design.values())], order="F")
        forms = {"array": lambda: project.solve(array, extrapolate=True),
                 "dict": lambda: project.solve(design, extrapolate=True)}
        best = dict.fromkeys(forms, float("inf"))
        for _ in range(ROUNDS):
            for name, call in forms.items():
                best[name] = min(best[name], seconds(call))
    for name, value in best.items():
        print(f"{name:6} {value * 1e6:7.2f} us  {value / best['array']:5.2f}")


main()
