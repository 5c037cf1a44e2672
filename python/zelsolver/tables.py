"""What a caller may pass as the designs of a training, made into the columns of a table."""

from __future__ import annotations

import math
from typing import Any, Dict, List, Optional, Sequence, Tuple

import numpy as np
from numpy.typing import NDArray

from .coding import as_date_text, is_missing
from .designs import column_names
from .errors import InputError
from .results import Array
from .study import Column


def as_columns(frame: Any, inputs: Sequence[str], responses: Sequence[str]
               ) -> Tuple[List[Column], List[str]]:
    """The columns of `frame`, and the names of those that are dates, which become texts here.

    frame: columns by name (a DataFrame, a dict, a structured array) of n values each: numbers,
        texts, datetime64; an n x k array of numbers, its columns named by `inputs`, then
        `responses`; or a pair of arrays for these two, n x m and n x r or n

    Raises InputError for wrong shapes and types, naming the column.
    """
    if isinstance(frame, tuple):
        named = _named_pair(frame, inputs, responses)
    else:
        names = column_names(frame)
        if names is None:
            named = _named_array(frame, [*inputs, *responses], "the designs")
        else:
            _check_unique(names)
            named = {str(name): frame[name] for name in names}
    wanted = {*inputs, *responses}
    columns, dates = [], []
    for name, values in named.items():
        column, is_date = _as_column(name, values, name in wanted)
        columns.append(column)
        if is_date:
            dates.append(name)
    _check_lengths(columns)
    return columns, dates


def _named_pair(pair: Tuple[Any, ...], inputs: Sequence[str], responses: Sequence[str]
                ) -> Dict[str, Any]:
    if len(pair) != 2:
        raise InputError(f"a tuple of {len(pair)}: expected (X, Y), the inputs and the responses")
    return {**_named_array(pair[0], inputs, "the inputs"),
            **_named_array(pair[1], responses, "the responses")}


def _named_array(values: Any, names: Sequence[str], what: str) -> Dict[str, Any]:
    if hasattr(values, "toarray"):
        raise InputError(f"{what} are a sparse matrix: expected a dense one, as its toarray() gives")
    array = np.asarray(values)
    if array.ndim == 1 and len(names) == 1:
        array = array.reshape(-1, 1)
    if array.ndim != 2 or array.shape[1] != len(names):
        raise InputError(f"{what} have the shape {array.shape}: expected (n, {len(names)}), a "
                         "column for each name")
    _check_unique(names)
    return {name: array[:, i] for i, name in enumerate(names)}


def _check_unique(names: Sequence[Any]) -> None:
    seen = set()
    for name in map(str, names):
        if name in seen:
            raise InputError(f'several columns "{name}"')
        seen.add(name)


def _check_lengths(columns: List[Column]) -> None:
    lengths: Dict[int, str] = {}
    for column in columns:
        lengths.setdefault(len(column), column.name)
    if len(lengths) > 1:
        raise InputError("columns of different lengths: " + ", ".join(
            f'"{name}" has {length}' for length, name in lengths.items()))


def _as_column(name: str, values: Any, wanted: bool) -> Tuple[Column, bool]:
    """The column, and whether it was one of dates. One that is not `wanted` by name may be of any
    type, as text: a pattern may yet ask for it, and is told what stands there."""
    mask = np.asarray(values.mask) if isinstance(values, np.ma.MaskedArray) else None
    array = np.asarray(values)
    if array.ndim != 1:
        raise InputError(f'column "{name}" has the shape {array.shape}: expected (n,)')
    kind = array.dtype.kind
    if kind in "biuf":
        numbers = array.astype(np.float64)
        if mask is not None:
            numbers[mask] = np.nan
        return Column(name, numbers), False
    if kind == "M":
        return Column(name, texts=[as_date_text(date) for date in array]), True
    if kind not in "OUS" and wanted:
        raise InputError(f'column "{name}": {array.dtype} is neither numbers, nor texts, nor dates')
    found = _numbers(array) if kind == "O" else None
    return Column(name, found, [] if found is not None else [_text(v) for v in array]), False


def _numbers(array: NDArray[Any]) -> Optional[Array]:
    """The values of an array of objects, if they all are numbers or missing."""
    numbers = np.empty(len(array))
    for i, value in enumerate(array):
        if is_missing(value):
            numbers[i] = np.nan
        elif isinstance(value, (str, bytes)):
            return None
        else:
            try:
                numbers[i] = float(value)
            except (TypeError, ValueError, OverflowError):
                return None
    return numbers


def _text(value: Any) -> Optional[str]:
    if is_missing(value) or isinstance(value, float) and math.isnan(value):
        return None
    return value.decode(errors="replace") if isinstance(value, bytes) else str(value)
