"""Finds and loads a shared library of the package."""

from __future__ import annotations

import ctypes
import os
import sys
from typing import Any, Dict, List, Tuple

from .errors import LibraryNotFoundError

#: Result and arguments of each function, by name.
Prototypes = Dict[str, Tuple[Any, List[Any]]]


def load(path: str, what: str, prototypes: Prototypes) -> ctypes.CDLL:
    """The library of this path. Raises LibraryNotFoundError, also when it is another than `what`:
    it lacks a function."""
    try:
        functions = ctypes.CDLL(path)
    except OSError as error:
        raise LibraryNotFoundError(str(error)) from None
    for name, (result, arguments) in prototypes.items():
        try:
            function = getattr(functions, name)
        except AttributeError:
            raise LibraryNotFoundError(
                f"{path}: not the library {what}, it has no {name}") from None
        function.restype, function.argtypes = result, arguments
    return functions


def candidates(file_name: str) -> List[str]:
    """Where to look, in this order: where the system looks, beside this interpreter, /usr/local
    (which the system's cache may not know yet)."""
    folders = [os.path.join(sys.prefix, "lib"), "/usr/local/lib"]
    return [file_name] + [os.path.join(folder, file_name) for folder in folders]


def find(file_name: str, variable: str, what: str, prototypes: Prototypes
         ) -> Tuple[str, ctypes.CDLL]:
    """Path and functions of the library that the environment variable names or, without it, of the
    first candidate that loads. Raises LibraryNotFoundError, which tells what was tried."""
    named = os.environ.get(variable)
    if named:
        path = os.path.abspath(named)
        try:
            return path, load(path, what, prototypes)
        except LibraryNotFoundError as error:
            raise LibraryNotFoundError(f"{error} ({variable} is {named})") from None
    failures = []
    for candidate in candidates(file_name):
        try:
            return candidate, load(candidate, what, prototypes)
        except LibraryNotFoundError as error:
            failures.append(str(error))
    raise LibraryNotFoundError(
        f"The library {file_name} was not found. Install zelsolver, or name the file in the "
        f"environment variable {variable}. Tried: " + "; ".join(failures))
