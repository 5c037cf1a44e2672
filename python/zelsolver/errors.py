"""What can go wrong. Every error of the package is a ZelError; its text says what is wrong, in the
library's own words where the library found it. A bug to report is anything else."""

from __future__ import annotations

import os
from typing import Any, Optional, Sequence, Tuple


class ZelError(Exception):
    """Base of all errors of this package."""

    def __init__(self, text: str, status: Optional[int] = None) -> None:
        super().__init__(text)
        #: The library's status number; None when the library was not asked.
        self.status = status

    def __str__(self) -> str:  # KeyError, a base of one class below, would print quotation marks
        return str(self.args[0])


class LibraryNotFoundError(ZelError):
    """The shared library cannot be found or loaded, or is another library."""


class ProjectError(ZelError):
    """The file cannot be opened: it is missing, damaged, no project, or without models."""


class ProjectNotFoundError(ProjectError, FileNotFoundError):
    """There is no file of this name."""

    def __init__(self, path: str) -> None:
        super().__init__(f"{path}: {os.strerror(2)}")
        self.errno, self.strerror, self.filename = 2, os.strerror(2), path

    def __reduce__(self) -> Tuple[Any, ...]:  # also out of a pool of processes
        return type(self), (self.filename,)


class SignatureError(ProjectError):
    """The file's SHA-512 is not the one that the caller expects."""


class ClosedError(ZelError, ValueError):
    """The project has been closed."""


class UnknownNameError(ZelError, KeyError):
    """The project holds no response, criterion, input or parameter of this name."""


class InputError(ZelError, ValueError):
    """The designs do not fit: a wrong shape, a missing column, a value that is no number."""


class BoundsError(InputError):
    """A value lies outside the range of the project's designs; `extrapolate=True` permits it."""

    def __init__(self, text: str, row: int, input: str, value: float,
                 bounds: Tuple[float, float]) -> None:
        super().__init__(f"{text} (design {row})", status=2)
        self._text = text
        #: Row of the first design outside, from 0; its first input outside; that value.
        self.row, self.input, self.value = row, input, value
        #: (lower, upper) of the input.
        self.bounds = bounds

    def __reduce__(self) -> Tuple[Any, ...]:
        return type(self), (self._text, self.row, self.input, self.value, self.bounds)


class ModelError(ZelError):
    """A model cannot do what is asked: thin plate splines know no gradients, densities and errors,
    for example."""


def unknown_name(kind: str, name: object, known: Sequence[str]) -> UnknownNameError:
    """An UnknownNameError that tells the names there are (the first ten)."""
    names = ", ".join(f'"{k}"' for k in known[:10]) + (", ..." if len(known) > 10 else "")
    return UnknownNameError(f'no {kind} "{name}"; there are {names or "none"}')
