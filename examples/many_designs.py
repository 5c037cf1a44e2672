#!/usr/bin/env python3
"""Predicts more designs than fit into memory, on all cores of this machine or on a cluster.

    many_designs.py PROJECT [DESIGNS] [SCHEDULER]

Draws DESIGNS (10^6 without it) within the bounds of PROJECT, solves them in blocks on the workers
of the scheduler with this address, or on as many worker processes as there are cores, and prints
what became of each response and criterion. Needs dask and its package distributed.
"""
import resource
import sys
import time

import dask
import dask.array
import distributed
import numpy as np
import zelsolver
import zelsolver.dask

BLOCK = 50_000  # designs of a task: some seconds of work, some MB of results


def draw(project, n):
    lower, upper = np.array(list(project.bounds.values())).T
    random = dask.array.random.RandomState(1)
    return lower + (upper - lower) * random.random_sample((n, len(lower)), chunks=(BLOCK, -1))


def usage():
    """Processor time in seconds and the largest memory in MB of a worker until now."""
    used = resource.getrusage(resource.RUSAGE_SELF)
    return used.ru_utime + used.ru_stime, used.ru_maxrss / 1024


def main(path, n="1e6", scheduler=None):
    n = int(float(n))
    client = distributed.Client(scheduler) if scheduler else distributed.Client(
        threads_per_worker=1, dashboard_address=None)
    client.run(zelsolver.set_num_threads, 1)  # the workers share the cores among themselves
    with client, zelsolver.Project(path) as project:
        values = zelsolver.dask.solve(draw(project, n), project)
        idle = sum(seconds for seconds, _ in client.run(usage).values())
        begin = time.perf_counter()
        lowest, highest, mean = dask.compute(values.min(axis=0), values.max(axis=0),
                                             values.mean(axis=0))
        seconds = time.perf_counter() - begin
        for row in zip(zelsolver.dask.columns(project), lowest, mean, highest):
            print("%-20s lowest %12.6g  mean %12.6g  highest %12.6g" % row)
        workers = client.run(usage).values()
        busy = sum(seconds for seconds, _ in workers) - idle
        print(f"{n} designs in {seconds:.1f} s on {len(workers)} workers: {n / busy:.0f} a second "
              f"of processor time, at most {max(peak for _, peak in workers):.0f} MB in one")


if __name__ == "__main__":
    main(*sys.argv[1:])
