"""One design at a time through the Python package, as a dict and as an array that is used in place,
beside calls of the library written by hand: one that makes its array of the dict by name and gets
new memory for the result, and one whose arrays stand ready. By turns; processor time of the fastest
of some rounds.

    PYTHONPATH=python python3 bench/one_design.py PROJECT
"""

import sys
import time

import numpy as np
import zelsolver
from zelsolver import library

ROUNDS, CALLS = 25, 1000


def seconds(call):
    start = time.process_time()
    for _ in range(CALLS):
        call()
    return (time.process_time() - start) / CALLS


def main():
    path = sys.argv[1]
    with zelsolver.Project(path) as project:
        design = {name: float(value) for name, value in project.reference.items()}
        array = np.array([list(design.values())], order="F")
        inputs, size = project.inputs, len(project.responses) + len(project.criteria)
        flags = library.SOLVE_EXTRAPOLATE | library.SOLVE_RESPONSES
        if project.criteria:
            flags |= library.SOLVE_CRITERIA
        values = np.empty(size)
        begin, out = array.ctypes.data, values.ctypes.data
        solve, spelling = library.get_library()._functions.dzel2_solve_hash, path.encode()

        def by_hand():
            x, y = np.array([design[name] for name in inputs]), np.empty(size)
            solve(spelling, 1, x.ctypes.data, x.size, flags, y.ctypes.data, size, None)
            return y

        forms = {"bare": lambda: solve(spelling, 1, begin, len(inputs), flags, out, size, None),
                 "by hand": by_hand,
                 "array": lambda: project.solve(array, extrapolate=True),
                 "dict": lambda: project.solve(design, extrapolate=True)}
        best = dict.fromkeys(forms, float("inf"))
        for _ in range(ROUNDS):
            for name, call in forms.items():
                best[name] = min(best[name], seconds(call))
        solution = project.solve(design, extrapolate=True)
        told = np.concatenate([solution.responses.array[0], solution.criteria.array[0]])
        assert np.array_equal(told, by_hand(), equal_nan=True)
    for name, value in best.items():
        print(f"{name:8} {value * 1e6:7.2f} us  {value / best['by hand']:5.2f}")


main()
