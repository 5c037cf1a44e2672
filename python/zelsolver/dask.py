"""Predictions of more designs than one machine holds: dask DataFrames and arrays.

    import zelsolver.dask

    result = zelsolver.dask.solve(designs, project)      # lazy, a partition for each of `designs`
    result.to_parquet("predictions")

The project is a key of its own in the graph: a worker gets it once, from whichever has it, and
keeps it for all partitions; when a worker is lost, the scheduler repeats what was lost with it.
Needs the package dask.
"""

from __future__ import annotations

import hashlib
from typing import Any, Tuple

import numpy as np
from dask.array import Array as DaskArray
from dask.dataframe import DataFrame as DaskFrame
from dask.delayed import delayed

from .errors import InputError
from .project import Project
from .results import Array


def solve(X: Any, project: Project, criteria: bool = True, errors: bool = False,
          density: bool = False, extrapolate: bool = False) -> Any:
    """Project.solve() of each partition of `X`, when the result is computed.

    X: a dask DataFrame, its columns by name; or a dask array of n x m numbers, its columns in the
        order of `project.inputs`

    Gives a DataFrame with the columns of Solution.to_frame(), the partitions and the index of X; or
    an array of these columns, n x K, whose names are columns(project, ...). Raises InputError for
    wrong columns at once; what is wrong with a design is known when its partition is computed.
    """
    options = {"criteria": criteria, "errors": errors, "density": density,
               "extrapolate": extrapolate}
    if isinstance(X, DaskFrame):
        meta = _solve_frame(X._meta, project, options)
        return X.map_partitions(_solve_frame, _shared(project), options, meta=meta,
                                transform_divisions=False)
    if isinstance(X, DaskArray):
        return _solve_array(X, project, options)
    raise InputError(f"{type(X).__name__}: expected a dask DataFrame or a dask array")


def columns(project: Project, criteria: bool = True, errors: bool = False, density: bool = False
            ) -> Tuple[str, ...]:
    """The names of the columns of a result."""
    empty = np.empty((0, len(project.inputs)))
    return project.solve(empty, criteria, errors, density).columns()


def _shared(project: Project) -> Any:
    contents = project.to_bytes()
    key = "zelsolver-project-" + hashlib.sha512(contents).hexdigest()[:32]
    return delayed(Project.from_bytes)(contents, dask_key_name=key)


def _solve_frame(frame: Any, project: Project, options: Any) -> Any:
    return project.solve(frame, **options).to_frame()


def _solve_block(block: Array, project: Project, options: Any) -> Array:
    return project.solve(block, **options).to_array()


def _solve_array(X: Any, project: Project, options: Any) -> Any:
    m = len(project.inputs)
    if X.ndim != 2 or X.shape[1] != m:
        raise InputError(f"the designs have the shape {X.shape}: expected (n, {m}), a column for "
                         "each input")
    if X.numblocks[1] != 1:
        X = X.rechunk({1: m})
    width = len(columns(project, options["criteria"], options["errors"], options["density"]))
    return X.map_blocks(_solve_block, _shared(project), options, dtype=np.float64,
                        chunks=(X.chunks[0], (width,)), meta=np.empty((0, width)))
