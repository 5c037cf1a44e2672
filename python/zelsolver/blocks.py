"""Calls of the library for any number of designs, in pieces if they are many."""

from __future__ import annotations

import ctypes
from typing import Any, Callable, List, NamedTuple, Sequence

import numpy as np

from .designs import Matrix
from .library import MAX_SIZE
from .results import Array

#: Designs of one call of the library. A larger array is solved in such pieces, between which other
#: threads get their turn and Ctrl-C is heard.
_BLOCK = 1 << 17


class Part(NamedTuple):
    """One of the blocks of values that a call delivers, one behind the other."""

    width: int  # values per design
    design_major: bool  # how the library writes them

    def view(self, flat: Array, n: int) -> Array:
        """n x width"""
        if self.design_major or n == 1:
            return flat.reshape(n, self.width)
        return flat.reshape(self.width, n).T


def address(array: Array) -> int:
    """Of the first element of a contiguous array, which the caller keeps alive."""
    try:  # takes a third of the time of the way below, which counts for one design
        memory: Any = array.T if array.ndim > 1 else array
        return ctypes.addressof(ctypes.c_char.from_buffer(memory))
    except (TypeError, ValueError):  # read-only, or empty
        return array.ctypes.data


def in_blocks(designs: Matrix, parts: Sequence[Part],
              call: Callable[[Matrix, Array], None]) -> List[Array]:
    """An array of n x width for each part, from what `call` writes for a piece of the designs into
    an array that fits. What it does not write is NaN."""
    n, m = designs.shape
    width = sum([part.width for part in parts])
    block = min(_BLOCK, MAX_SIZE // max(width, m, 1))
    if n <= block:
        out = np.empty(width * n)
        out.fill(np.nan)  # without a model no gradients are written
        if n > 0:  # the library has no errors and densities of no designs
            call(designs, out)
        values, begin = [], 0
        for part in parts:
            end = begin + part.width * n
            values.append(part.view(out[begin:end], n))
            begin = end
        return values
    results = [np.empty((n, part.width), order="C" if part.design_major else "F") for part in parts]
    for begin in range(0, n, block):
        rows = slice(begin, begin + block)
        pieces = in_blocks(np.asfortranarray(designs[rows]), parts, call)
        for result, piece in zip(results, pieces):
            result[rows] = piece
    return results
