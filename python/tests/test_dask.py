"""Partitions on the workers of a scheduler, against the same designs solved here."""

import os
import signal
import time

import numpy as np
import pandas
import pytest
import zelsolver
from conftest import SAMPLE, Plate, truss_designs

dask = pytest.importorskip("dask")
dask_array = pytest.importorskip("dask.array")
dask_frame = pytest.importorskip("dask.dataframe")
distributed = pytest.importorskip("distributed")
import zelsolver.dask


@pytest.fixture(scope="module")
def client():
    quick = dask.config.set({"distributed.comm.timeouts.connect": "5s"})  # to a dead worker
    with quick, distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                         dashboard_address=None) as cluster:
        with distributed.Client(cluster) as client:
            yield client


@pytest.mark.parametrize("options", [{}, {"criteria": False}, {"errors": True, "density": True}])
def test_partitions_are_joined_to_what_is_solved_at_once(truss, options):
    designs = truss_designs(500)
    expected = truss.solve(designs, **options).to_frame()
    array = zelsolver.dask.solve(dask_array.from_array(designs, chunks=(123, 4)), truss, **options)
    assert array.chunks[0] == (123, 123, 123, 123, 8)
    assert zelsolver.dask.columns(truss, **options) == tuple(expected.columns)
    np.testing.assert_array_equal(array.compute(), expected)
    frame = pandas.DataFrame(designs, columns=truss.inputs, index=np.arange(500) * 3)[::-1]
    lazy = zelsolver.dask.solve(dask_frame.from_pandas(frame, npartitions=4), truss, **options)
    assert list(lazy.columns) == list(expected.columns)
    expected.index = np.arange(500) * 3
    pandas.testing.assert_frame_equal(lazy.compute(), expected, rtol=1e-12, check_freq=False)


def test_refuses_what_does_not_fit_before_anything_runs(plate):
    frame = dask_frame.from_pandas(pandas.DataFrame({"x": [1.0], "y": [0.0]}), npartitions=1)
    for X, text in ((frame, 'no column for the input "Größe"'),
                    (dask_array.ones((5, 2)), "shape (5, 2): expected (n, 3)"),
                    (np.ones((5, 3)), "ndarray: expected a dask DataFrame or a dask array")):
        with pytest.raises(zelsolver.InputError) as caught:
            zelsolver.dask.solve(X, plate)
        assert text in str(caught.value)
    lazy = zelsolver.dask.solve(dask_array.full((5, 3), 99.0), plate)
    with pytest.raises(zelsolver.BoundsError, match="Value 99"):
        lazy.compute(scheduler="sync")


def test_a_killed_worker_costs_nothing_but_time(client, truss):
    n, chunk = 120_000, 3_000
    designs = dask_array.random.RandomState(3).uniform(6, 24, (n, 10), chunks=(chunk, 10))
    lazy = zelsolver.dask.solve(designs, truss, errors=True, extrapolate=True)
    client.run(_count_openings)
    future = client.compute(lazy.sum(axis=0))
    victim = next(iter(client.run(os.getpid).values()))
    while min(client.run(_openings).values()) < 1:  # both are at work
        assert not future.done()
        time.sleep(0.02)
    os.kill(victim, signal.SIGKILL)
    total = future.result(timeout=120)
    assert max(client.run(_openings).values()) <= 1  # however many partitions a worker solves
    expected = np.zeros_like(total)
    for i in range(designs.numblocks[0]):
        expected += truss.solve(designs.blocks[i].compute(scheduler="sync"), errors=True,
                                extrapolate=True).to_array().sum(axis=0)
    np.testing.assert_allclose(total, expected, rtol=1e-12)  # another order of the sum
    assert victim not in client.run(os.getpid).values()


def _count_openings():
    handle = zelsolver.handle.Handle
    handle.opened, start = 0, handle.__init__

    def counted(self, *arguments):
        handle.opened += 1
        start(self, *arguments)

    handle.__init__ = counted


def _openings():
    return getattr(zelsolver.handle.Handle, "opened", 0)
