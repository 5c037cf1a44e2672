"""The shared library of predictions, and calls of it."""

from __future__ import annotations

import ctypes
import os
import threading
from ctypes import c_char_p, c_int, c_uint, c_void_p
from typing import Any, Optional, Tuple

from . import loading
from .errors import ZelError

#: Names the library to load, a path; no other place is searched then.
ENVIRONMENT_VARIABLE = "ZELSOLVER_LIBRARY"

_THREADS_VARIABLE = "ZELSOLVER_NUM_THREADS"

_FILE_NAME = "libzelsolver.so.1"

OK, ERROR = 0, 2
INPUTS, OUTPUTS, CRITERIA = 1, 2, 4
SOLVE_EXTRAPOLATE, SOLVE_RESPONSES, SOLVE_CRITERIA = 1, 2, 4
RESPONSE_EXTRAPOLATE, RESPONSE_GRADIENTS, RESPONSE_DENSITIES, RESPONSE_ERRORS = 1, 2, 4, 8

#: Largest number of elements of an array: sizes cross the interface in 32 bits.
MAX_SIZE = 2**32 - 1

# Arrays go as plain addresses, which costs least. Only functions that write into memory of the
# caller are used: a pointer into a buffer of the library would die with another thread's call.
_PATH = _HASH = _NAME = c_char_p
_ARRAY = c_void_p
_PROTOTYPES: loading.Prototypes = {
    "dzel2_getLastError": (c_char_p, []),
    "dzel2_get_version_str": (c_char_p, []),
    "dzel2_free": (c_int, [c_void_p]),
    "dzel2_cleanup": (c_int, []),
    "dzel2_hasSurrogate_hash": (c_int, [_PATH, _HASH]),
    "dzel2_getDimensions_hash": (c_int, [_PATH, c_uint, _ARRAY, c_uint, _HASH]),
    "dzel2_getNames_hash": (c_int, [_PATH, c_uint, c_void_p, _HASH]),
    "dzel2_getInputBounds_hash": (c_int, [_PATH, _ARRAY, _HASH]),
    "dzel2_getInputBoundsPerParameter_hash": (c_int, [_PATH, _NAME, _ARRAY, _HASH]),
    "dzel2_getReferenceValuePerParameter_hash": (c_int, [_PATH, _NAME, _ARRAY, _HASH]),
    "dzel2_getCoPValuesPerResponse_hash": (c_int, [_PATH, _NAME, _ARRAY, _HASH]),
    "dzel2_getFilteredStatesPerResponse_hash": (c_int, [_PATH, _NAME, _ARRAY, _HASH]),
    "dzel2_solve_hash": (c_int, [_PATH, c_uint, _ARRAY, c_uint, c_uint, _ARRAY, c_uint, _HASH]),
    "dzel2_get_per_response_hash":
        (c_int, [_PATH, c_uint, _ARRAY, c_uint, _NAME, c_uint, _ARRAY, c_uint, _HASH]),
}


class Library:
    """The loaded library, which any thread may call at any time.

    A call that failed is followed by the query of its text on the same thread, which finds its own.
    `lock` guards what is known here about the projects that are open, not the calls.
    """

    def __init__(self) -> None:
        """Raises LibraryNotFoundError."""
        #: Where it was found.
        self.path, self._functions = loading.find(_FILE_NAME, ENVIRONMENT_VARIABLE, "zelsolver",
                                                  _PROTOTYPES)
        self.lock = threading.Lock()
        # A forked child gets the lock free, and the bookkeeping between two changes.
        os.register_at_fork(before=self.lock.acquire, after_in_parent=self.lock.release,
                            after_in_child=self.lock.release)

    def version(self) -> str:
        """Such as "1.2.3 (456)"."""
        text: bytes = self._functions.dzel2_get_version_str()
        return text.decode()

    def call(self, name: str, *arguments: Any) -> None:
        """One call of a function that returns a status.

        Raises ZelError with the library's text, or MemoryError.
        """
        status = getattr(self._functions, name)(*arguments)
        if status != OK:
            text = (self._functions.dzel2_getLastError() or b"").decode(errors="replace")
            if text == "std::bad_alloc":
                raise MemoryError(f"{name}: {text}")
            raise ZelError(text or f"{name} failed with status {status}.", status)

    def close_all(self) -> None:
        """Closes all projects. The caller holds `lock`."""
        self._functions.dzel2_cleanup()

    def take_names(self, block: c_void_p, count: int) -> Tuple[str, ...]:
        """The names of a list that the library allocated, which is released."""
        names = []
        try:
            address = block.value or 0
            for _ in range(count):
                name = ctypes.string_at(address)
                names.append(name.decode(errors="replace"))
                address += len(name) + 1
        finally:
            self._functions.dzel2_free(block)
        return tuple(names)


_library: Optional[Library] = None
_library_lock = threading.Lock()


def get_library() -> Library:
    """The library, loaded by the first call of the process that succeeds."""
    global _library
    with _library_lock:
        if _library is None:
            _library = Library()
        return _library


def set_num_threads(number: Optional[int] = None) -> None:
    """Sets how many threads a prediction of many designs may use: 1 to 1024, None for as many as
    the process may use processors. It stands in the environment as ZELSOLVER_NUM_THREADS, where the
    library looks at each call and child processes inherit it. Call it while no prediction runs.

    Raises ValueError for another number.
    """
    if number is None:
        os.environ.pop(_THREADS_VARIABLE, None)
        return
    if number != int(number) or not 1 <= number <= 1024:
        raise ValueError(f"{number!r}: the number of threads must be 1 to 1024")
    os.environ[_THREADS_VARIABLE] = str(int(number))


def library_version() -> str:
    """Version of the shared library, such as "1.2.3 (456)". Raises LibraryNotFoundError."""
    return get_library().version()
