"""Expressions of the language of criteria."""

from __future__ import annotations

from typing import Any

import numpy as np

from .errors import InputError
from .study import evaluate as evaluate_study


def evaluate(expression: str, **values: Any) -> Any:
    """The value of an expression of the language of criteria, as `zel eval` computes it.

        evaluate("max(abs(stress)) <= 25", stress=[12.0, -18.5])

    values: meanings of names: numbers, booleans, vectors and matrices (nested sequences or
        arrays), or texts, which are expressions

    Gives a bool, float, complex or str; vectors (n,) and matrices (rows, columns) as arrays; the
    text that `zel eval` prints for any other kind. Raises InputError.
    """
    result = evaluate_study(expression, {name: _definition(name, value)
                                         for name, value in values.items()})
    kind = result.document["kind"]
    if kind not in ("boolean", "scalar", "vector", "matrix"):
        return result.document.get("value", result.document["text"])
    numbers: Any = result.arrays["value"]
    if "imaginary" in result.arrays:
        numbers = numbers + 1j * result.arrays["imaginary"]
    if kind == "matrix":
        return numbers
    return numbers.ravel() if kind == "vector" else (
        bool(numbers[0, 0]) if kind == "boolean" else numbers[0, 0].item())


def _definition(name: str, value: Any) -> Any:
    """As JSON writes it."""
    if isinstance(value, (str, bool)):
        return value
    try:
        array = np.asarray(value)
    except ValueError:  # rows of different lengths
        array = np.empty(0, object)
    if array.dtype.kind == "b" and array.ndim == 0:
        return bool(array)
    if array.dtype.kind not in "biuf" or array.ndim > 2:
        raise InputError(f'"{name}": {value!r} is no number, vector, matrix or text')
    numbers = array.astype(np.float64)
    if not np.isfinite(numbers).all():
        raise InputError(f'"{name}": {value!r} is not finite')
    return numbers.tolist()
