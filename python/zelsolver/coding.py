"""Words and dates as the numbers that stand for them."""

from __future__ import annotations

import datetime
import sys
from typing import Any, Callable, Mapping, Optional

import numpy as np
from numpy.typing import NDArray

from .errors import InputError

_EPOCH = np.datetime64("1970-01-01", "us")
_DAY = np.timedelta64(1, "D") / np.timedelta64(1, "us")


def is_missing(value: object) -> bool:
    """Whether it is None or pandas.NA."""
    return value is None or value is getattr(sys.modules.get("pandas"), "NA", None)


def as_date_text(date: Any) -> Optional[str]:
    """A datetime64 as the library reads dates, to the microsecond; None for NaT."""
    return None if np.isnat(date) else str(np.datetime_as_string(date.astype("M8[us]")))


def as_days(dates: NDArray[Any]) -> NDArray[np.float64]:
    """datetime64 as days since 1970-01-01; NaT is NaN."""
    days: NDArray[np.float64] = np.asarray((dates.astype("M8[us]") - _EPOCH).astype(np.float64)
                                           / _DAY)
    days[np.isnat(dates)] = np.nan
    return days


def coded(values: Any, name: str, describe: Callable[[str], Mapping[str, Any]]) -> Any:
    """The values of an input: words by their positions, dates by their days, all else as it is.
    Dates may be datetime64, datetime, or texts of ISO 8601, as the training makes them.

    describe: tells the input's "words", and of one of dates "days_since"; only asked when it
        matters

    Raises InputError for a word that the input does not have, and what is no date.
    """
    kind = getattr(getattr(values, "dtype", None), "kind", None)
    if kind is not None and kind in "biuf":
        return values
    array = np.asarray(values)
    if array.dtype.kind in "SO":  # a training reads bytes as UTF-8
        array = np.array([v.decode(errors="replace") if isinstance(v, bytes) else v
                          for v in array.flat], object).reshape(array.shape)
    if array.dtype.kind not in "MOU" or array.dtype.kind != "M" and not any(
            isinstance(v, (str, datetime.date)) for v in array.flat):
        return values
    if describe(name).get("days_since"):
        return _dated(array, name)
    words = describe(name).get("words")
    if not words:
        return values
    codes = {word: float(code) for code, word in enumerate(words)}
    numbers = np.empty(array.shape)
    for index, value in np.ndenumerate(array):
        if is_missing(value):
            numbers[index] = np.nan
        elif value in codes:
            numbers[index] = codes[value]
        else:
            known = ", ".join(f'"{word}"' for word in words)
            raise InputError(f'column "{name}": {value!r} is none of its words {known}')
    return numbers


def _dated(array: NDArray[Any], name: str) -> NDArray[np.float64]:
    if any(getattr(v, "tzinfo", None) is not None for v in array.flat if array.dtype.kind == "O"):
        raise InputError(f'column "{name}": dates with a time zone, which a training does not take')
    try:
        if array.dtype.kind == "O":
            array = np.array([None if is_missing(v) else v for v in array.flat],
                             "M8[us]").reshape(array.shape)
        return as_days(array.astype("M8[us]"))
    except (TypeError, ValueError) as error:
        raise InputError(f'column "{name}", of dates: {error}') from None
