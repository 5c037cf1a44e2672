"""What a caller may pass as designs, made into the matrix that the library takes."""

from __future__ import annotations

from typing import Any, Callable, Dict, List, Mapping, Optional, Sequence

import numpy as np
from numpy.typing import NDArray

from .coding import coded, is_missing
from .errors import InputError

Matrix = NDArray[np.float64]

#: What a project tells about an input by its name: its "words", and of dates "days_since".
Describe = Callable[[str], Mapping[str, Any]]

_PLAIN_NUMBERS = frozenset((float, int, np.float64))


def as_matrix(X: Any, inputs: Sequence[str], describe: Optional[Describe] = None) -> Matrix:
    """The values of `X` as n x m doubles, input after input in memory (Fortran order).

    X is one of
      - an array-like of n x m numbers, columns in the order of `inputs`; or m numbers, one design;
      - columns by name: a DataFrame, a dict, a structured array, or anything with keys(). Each is
        a column of n numbers or a single number, which then stands for all designs. Columns that
        are no inputs are ignored. With `describe`, words and dates may stand for their numbers;
    and is used in place, without a copy, when it is such a matrix already: doubles in Fortran
    order, or a DataFrame that holds them (columns of one type, in the order of `inputs`).

    Raises InputError for a wrong shape, missing columns and what is no number. A value that is
    missing (None, pandas.NA, a masked element) is NaN.
    """
    if type(X) is dict:
        design = _one_design(X, inputs)
        if design is not None:
            return design
    names = column_names(X)
    if names is None:
        return _by_position(X, inputs)
    _check_names(names, inputs)
    if names == list(inputs) and _is_frame(X):
        whole = np.asarray(X)
        if whole.dtype == np.float64:
            return np.require(whole, np.float64, ["F_CONTIGUOUS", "ALIGNED"])
    return _by_name(X, inputs, describe)


def _one_design(X: Dict[Any, Any], inputs: Sequence[str]) -> Optional[Matrix]:
    """The matrix of a dict of a plain number for each input; None if it is anything else, which
    takes longer to read and to refuse."""
    values = [X.get(name) for name in inputs]
    if not values or not _PLAIN_NUMBERS.issuperset(map(type, values)):
        return None
    try:
        return np.array(values, np.float64).reshape(1, -1)
    except OverflowError:  # an int beyond all doubles
        return None


def column_names(X: Any) -> Any:
    """The list of names when `X` is columns by name, else None."""
    fields = getattr(getattr(X, "dtype", None), "names", None)
    if fields is not None:  # a structured array
        return list(fields)
    if isinstance(getattr(X, "columns", None), (list, tuple)):  # some data frames have no keys()
        return list(X.columns)
    return list(X.keys()) if hasattr(X, "keys") else None


def _is_frame(X: Any) -> bool:
    return hasattr(X, "columns") and len(getattr(X, "shape", ())) == 2


def _check_names(names: List[Any], inputs: Sequence[str]) -> None:
    known = set(names)
    missing = [name for name in inputs if name not in known]
    if missing:
        shown = ", ".join(f'"{name}"' for name in missing)
        raise InputError(f"no column for the input{'s' * (len(missing) > 1)} {shown}")
    if len(known) < len(names):
        for name in inputs:
            if names.count(name) > 1:
                raise InputError(f'{names.count(name)} columns "{name}"')


def _by_position(X: Any, inputs: Sequence[str]) -> Matrix:
    matrix = _numbers(X, "the designs")
    if matrix.shape == (len(inputs),):
        matrix = matrix.reshape(1, -1)
    if matrix.ndim != 2 or matrix.shape[1] != len(inputs):
        raise InputError(f"the designs have the shape {matrix.shape}: expected (n, {len(inputs)}), "
                         "a column for each input")
    return np.require(matrix, np.float64, ["F_CONTIGUOUS", "ALIGNED"])


def _by_name(X: Any, inputs: Sequence[str], describe: Optional[Describe]) -> Matrix:
    columns = [_numbers(coded(X[name], name, describe) if describe else X[name],
                        f'column "{name}"') for name in inputs]
    for name, column in zip(inputs, columns):
        if column.ndim > 1:
            raise InputError(f'column "{name}" has the shape {column.shape}: expected (n,)')
    lengths = {len(column): name for name, column in zip(inputs, columns) if column.ndim == 1}
    if len(lengths) > 1:
        raise InputError("columns of different lengths: " + ", ".join(
            f'"{name}" has {length}' for length, name in lengths.items()))
    matrix = np.empty((next(iter(lengths), 1), len(inputs)), order="F")
    for i, column in enumerate(columns):
        matrix[:, i] = column
    return matrix


def _numbers(values: Any, what: str) -> Matrix:
    """`values` as doubles, in place where they are. @throws InputError  `what` names them"""
    if hasattr(values, "toarray"):
        raise InputError(f"{what} are a sparse matrix: expected a dense one, as its toarray() gives")
    try:
        mask = np.asarray(values.mask) if isinstance(values, np.ma.MaskedArray) else None
        array = np.asarray(values)
    except ValueError as error:  # rows of different lengths
        raise InputError(f"{what}: {error}") from None
    if array.dtype.kind == "O":
        array = _from_objects(array, what)
    elif array.dtype.kind not in "biuf":
        raise InputError(f"{what}: {array.dtype} is not a type of real numbers")
    array = array.astype(np.float64, copy=mask is not None)
    if mask is not None:
        array[mask] = np.nan
    return array


def _from_objects(array: NDArray[Any], what: str) -> Matrix:
    numbers = np.empty(array.shape)
    for index, value in np.ndenumerate(array):
        try:
            if isinstance(value, (str, bytes, bytearray)):  # float() would read them
                raise TypeError
            numbers[index] = np.nan if is_missing(value) else float(value)
        except (TypeError, ValueError, OverflowError):
            place = f" at {index[0] if len(index) == 1 else index}" if index else ""
            raise InputError(f"{what}: {value!r}{place} is not a real number") from None
    return numbers
