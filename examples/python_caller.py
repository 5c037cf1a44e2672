#!/usr/bin/env python3
"""Opens a project and prints what it holds, through the C interface and the standard library alone.

    python_caller.py zel_tenbar.vrdb

The library is found as the system finds shared libraries; ZELSOLVER_LIBRARY names another one.
"""

import ctypes
import os
import sys

INPUTS, OUTPUTS = 1, 2  # selectors of dzel2_getDimensions and dzel2_getNames
EXTRAPOLATE, RESPONSES = 1, 2  # flags of dzel2_solve

library = ctypes.CDLL(os.environ.get("ZELSOLVER_LIBRARY", "libzelsolver.so.1"))
library.dzel2_getLastError.restype = ctypes.c_char_p
library.dzel2_free.argtypes = [ctypes.c_void_p]


class ZelError(Exception):
    """A call that failed, with the library's last-error text."""


def call(name, *arguments):
    """Calls `name`; texts go as UTF-8. Raises ZelError for any status but 0."""
    encoded = [a.encode() if isinstance(a, str) else a for a in arguments]
    if getattr(library, name)(*encoded) != 0:
        raise ZelError((library.dzel2_getLastError() or b"").decode(errors="replace"))


def dimensions(path):
    """Numbers of inputs and outputs."""
    counts = (ctypes.c_uint * 2)()
    call("dzel2_getDimensions", path, INPUTS | OUTPUTS, counts, 2)
    return tuple(counts)


def names(path, selector):
    """Names of the inputs or outputs."""
    block = ctypes.c_void_p()
    call("dzel2_getNamesWithDelimiter", path, selector, ctypes.byref(block), "\n")
    try:
        text = ctypes.string_at(block).decode()
    finally:
        library.dzel2_free(block)
    return text.split("\n") if text else []


def bounds(path):
    """(lower, upper) of each input in the project's designs."""
    values = (ctypes.c_double * (2 * dimensions(path)[0]))()
    call("dzel2_getInputBounds", path, values)
    return list(zip(values[::2], values[1::2]))


def reference_value(path, parameter):
    value = ctypes.c_double()
    call("dzel2_getReferenceValuePerParameter", path, parameter, ctypes.byref(value))
    return value.value


def total_cop(path, response):
    """Coefficient of prognosis of the response's model; -1 when the project holds none."""
    values = (ctypes.c_double * (dimensions(path)[0] + 1))()
    call("dzel2_getCoPValuesPerResponse", path, response, values)
    return values[-1]


def solve(path, designs):
    """Predicted responses of each design, which is a list of input values."""
    n_inputs, n_outputs = dimensions(path)
    n = len(designs)
    # Arrays stand input after input, and output after output.
    flat = (ctypes.c_double * (n_inputs * n))(*(d[i] for i in range(n_inputs) for d in designs))
    out = (ctypes.c_double * (n_outputs * n))()
    call("dzel2_solve", path, n, flat, len(flat), EXTRAPOLATE | RESPONSES, out, len(out))
    return [list(out[d::n]) for d in range(n)]


def main(arguments):
    if len(arguments) != 2:
        print(f"usage: {arguments[0]} PROJECT.vrdb", file=sys.stderr)
        return 2
    path = arguments[1]
    try:
        inputs = names(path, INPUTS)
        references = [reference_value(path, name) for name in inputs]
        print(f"{'input':20} {'lower':>12} {'upper':>12} {'reference':>12}")
        for name, (lower, upper), reference in zip(inputs, bounds(path), references):
            print(f"{name:20} {lower:12g} {upper:12g} {reference:12g}")

        predicted = solve(path, [references])[0]
        print(f"\n{'response':20} {'CoP':>12} {'predicted':>12}")
        for name, value in zip(names(path, OUTPUTS), predicted):
            print(f"{name:20} {total_cop(path, name):12g} {value:12g}")
    except ZelError as error:
        print(f"{path}: {error}", file=sys.stderr)
        return 1
    finally:
        library.dzel2_cleanup()
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
