"""The shared library of studies: what goes beyond predictions. Nothing else here calls it."""

from __future__ import annotations

import contextlib
import ctypes
import json
import signal
import threading
import weakref
from ctypes import POINTER, byref, c_char_p, c_double, c_int, c_size_t, c_void_p
from typing import Any, Callable, Dict, Iterator, List, Optional, Sequence, Tuple

import numpy as np
from numpy.typing import NDArray

from . import loading
from .errors import InputError, ZelError
from .results import Array

#: Names the library to load, a path; no other place is searched then.
ENVIRONMENT_VARIABLE = "ZELSTUDY_LIBRARY"

_FILE_NAME = "libzelstudy.so.1"

_OK, _REFUSED = 0, 1

#: Hears the share of the work that is done (0 to 1; negative while it is not known) and what is in
#: work. What it raises ends the work, and the caller gets it.
Progress = Callable[[float, str], Any]

_ProgressFunction = ctypes.CFUNCTYPE(c_int, c_double, c_char_p, c_void_p)
_OUT = POINTER(c_void_p)
_PROTOTYPES: loading.Prototypes = {
    "zelstudy_last_error": (c_char_p, []),
    "zelstudy_result_json": (c_char_p, [c_void_p]),
    "zelstudy_result_array":
        (c_int, [c_void_p, c_char_p, _OUT, POINTER(c_size_t), POINTER(c_size_t)]),
    "zelstudy_result_array_name": (c_char_p, [c_void_p, c_size_t]),
    "zelstudy_result_close": (None, [c_void_p]),
    "zelstudy_table_new": (c_int, [_OUT]),
    "zelstudy_table_add_numbers": (c_int, [c_void_p, c_char_p, c_void_p, c_size_t]),
    "zelstudy_table_add_texts": (c_int, [c_void_p, c_char_p, POINTER(c_char_p), c_size_t]),
    "zelstudy_table_close": (None, [c_void_p]),
    "zelstudy_project_from_bytes": (c_int, [c_char_p, c_size_t, _OUT]),
    "zelstudy_project_bytes": (c_int, [c_void_p, _OUT, POINTER(c_size_t)]),
    "zelstudy_project_save": (c_int, [c_void_p, c_char_p]),
    "zelstudy_project_close": (None, [c_void_p]),
    "zelstudy_train": (c_int, [c_void_p, c_char_p, _ProgressFunction, c_void_p, _OUT, _OUT]),
    "zelstudy_describe": (c_int, [c_void_p, c_char_p, _OUT]),
    "zelstudy_residuals": (c_int, [c_void_p, c_char_p, _OUT]),
    "zelstudy_sample": (c_int, [c_void_p, c_char_p, _OUT]),
    **{"zelstudy_" + name: (c_int, [c_void_p, c_char_p, _ProgressFunction, c_void_p, _OUT])
       for name in ("sensitivity", "propagate", "optimize", "export", "report")},
    "zelstudy_evaluate": (c_int, [c_char_p, c_char_p, _OUT]),
}

_functions: Optional[ctypes.CDLL] = None
_lock = threading.Lock()


def _library() -> ctypes.CDLL:
    """The library, loaded by the first call of the process that succeeds."""
    global _functions
    with _lock:
        if _functions is None:
            _, _functions = loading.find(_FILE_NAME, ENVIRONMENT_VARIABLE, "zelstudy", _PROTOTYPES)
        return _functions


def _check(status: int) -> None:
    """Raises InputError for what the library refused, MemoryError, or ZelError."""
    if status == _OK:
        return
    text = (_library().zelstudy_last_error() or b"").decode(errors="replace")
    if status == _REFUSED:
        raise InputError(text, status)
    if text == "std::bad_alloc":
        raise MemoryError(text)
    raise ZelError(text or f"The library failed with status {status}.", status)


def _encoded(text: str) -> bytes:
    if "\0" in text:
        raise InputError(f"{text!r} holds a NUL")
    try:
        return text.encode()
    except UnicodeEncodeError:
        raise InputError(f"{text!r} is no text of Unicode") from None


def _options(options: Dict[str, Any]) -> bytes:
    """As the library takes them; those that are None are left to it. Raises InputError for what
    JSON cannot write."""
    texts = []
    for key, value in options.items():
        plain = value.item() if isinstance(value, np.generic) else value
        try:
            if plain is not None:
                texts.append(f"{json.dumps(key)}: {json.dumps(plain, allow_nan=False)}")
        except (TypeError, ValueError):
            raise InputError(
                f"{key}: {value!r} is no finite number, text, or list of them") from None
    return ("{" + ", ".join(texts) + "}").encode()


class Result:
    """What a call found."""

    def __init__(self, document: Any, arrays: Dict[str, Array]) -> None:
        self.document = document
        self.arrays = arrays


def _take(handle: c_void_p) -> Result:
    """Copies a result of the library, which is released."""
    library = _library()
    try:
        arrays = {}
        index = 0
        while True:
            name = library.zelstudy_result_array_name(handle, index)
            if name is None:
                break
            arrays[name.decode()] = _array(handle, name)
            index += 1
        return Result(json.loads(library.zelstudy_result_json(handle)), arrays)
    finally:
        library.zelstudy_result_close(handle)


def _array(handle: c_void_p, name: bytes) -> Array:
    data, rows, columns = c_void_p(), c_size_t(), c_size_t()
    _check(_library().zelstudy_result_array(handle, name, byref(data), byref(rows),
                                            byref(columns)))
    values = np.empty((rows.value, columns.value))
    if values.size:
        assert data.value is not None
        ctypes.memmove(values.ctypes.data, data.value, values.nbytes)
    return values


class _Listener:
    """Passes progress on, and keeps for after the call what the caller's function raised and
    whether Ctrl-C was pressed: no exception may pass through C."""

    def __init__(self, progress: Optional[Progress]) -> None:
        self._progress = progress
        self._raised: Optional[BaseException] = None
        self._interrupted = False
        self._handler: Any = None
        self.function = _ProgressFunction(self._hear)

    def _hear(self, share: float, text: Optional[bytes], _: Optional[int]) -> int:
        try:
            if self._progress is not None and self._raised is None:
                self._progress(share, (text or b"").decode(errors="replace"))
            self._handle()
        except BaseException as error:
            self._raised = error
        return int(self._raised is not None)

    def _interrupt(self, *_: Any) -> None:
        self._interrupted = True

    def _handle(self) -> None:
        """Leaves Ctrl-C to the caller's handler, which may raise or not."""
        if self._interrupted:
            self._interrupted = False
            self._handler(signal.SIGINT, None)

    @contextlib.contextmanager
    def listening(self) -> Iterator[None]:
        """Around a call of the library that tells progress. A handler of Ctrl-C that raises could
        do so before _hear() gets to catch it: during the call it is noted alone."""
        handler = signal.getsignal(signal.SIGINT)
        if threading.current_thread() is not threading.main_thread() or not callable(handler):
            yield
            return
        self._handler = handler
        signal.signal(signal.SIGINT, self._interrupt)
        try:
            yield
        finally:
            signal.signal(signal.SIGINT, handler)

    def check(self) -> None:
        """Behind the call: raises what came meanwhile."""
        if self._raised is not None:
            raise self._raised
        self._handle()


class Column:
    """A column of a table: numbers (NaN for a missing one) or texts (None likewise)."""

    def __init__(self, name: str, numbers: Optional[Array] = None,
                 texts: Sequence[Optional[str]] = ()) -> None:
        self.name = name
        self.numbers = numbers
        self.texts = texts

    def __len__(self) -> int:
        return len(self.texts) if self.numbers is None else len(self.numbers)


@contextlib.contextmanager
def _table(columns: List[Column]) -> Iterator[c_void_p]:
    library, handle = _library(), c_void_p()
    _check(library.zelstudy_table_new(byref(handle)))
    try:
        for column in columns:
            name = _encoded(column.name)
            if column.numbers is not None:
                values: NDArray[np.float64] = np.ascontiguousarray(column.numbers, np.float64)
                _check(library.zelstudy_table_add_numbers(handle, name, values.ctypes.data,
                                                          len(values)))
            else:
                texts = [None if text is None else _encoded(text) for text in column.texts]
                _check(library.zelstudy_table_add_texts(
                    handle, name, (c_char_p * len(texts))(*texts), len(texts)))
        yield handle
    finally:
        library.zelstudy_table_close(handle)


class OpenProject:
    """A project that is open in the library; threads may share it. Released with the last
    reference."""

    def __init__(self, handle: c_void_p) -> None:
        self._handle = handle
        weakref.finalize(self, _library().zelstudy_project_close, handle)

    @classmethod
    def from_bytes(cls, contents: bytes) -> "OpenProject":
        """Raises InputError for what is no project."""
        handle = c_void_p()
        _check(_library().zelstudy_project_from_bytes(contents, len(contents), byref(handle)))
        return cls(handle)

    def contents(self) -> bytes:
        """The bytes of its file."""
        data, size = c_void_p(), c_size_t()
        _check(_library().zelstudy_project_bytes(self._handle, byref(data), byref(size)))
        assert data.value is not None
        return ctypes.string_at(data.value, size.value)

    def save(self, path: str) -> None:
        """Raises InputError."""
        _check(_library().zelstudy_project_save(self._handle, _encoded(path)))

    def ask(self, function: str, **options: Any) -> Result:
        """What "describe", "residuals" or "sample" tells. Raises InputError."""
        return _ask(function, self._handle, options)

    def work(self, function: str, progress: Optional[Progress], **options: Any) -> Result:
        """What "sensitivity", "propagate", "optimize", "export" or "report" finds. Raises
        InputError, and what `progress` raises."""
        listener = _Listener(progress)
        library, handle = _library(), c_void_p()
        try:
            with listener.listening():
                status = getattr(library, "zelstudy_" + function)(
                    self._handle, _options(options), listener.function, None, byref(handle))
            listener.check()
        except BaseException:  # may come when the work is over
            library.zelstudy_result_close(handle)
            raise
        _check(status)
        return _take(handle)


def _ask(function: str, project: Optional[c_void_p], options: Dict[str, Any]) -> Result:
    handle = c_void_p()
    _check(getattr(_library(), "zelstudy_" + function)(project, _options(options), byref(handle)))
    return _take(handle)


def train(columns: List[Column], options: Dict[str, Any], progress: Optional[Progress] = None
          ) -> Tuple[OpenProject, Any]:
    """The trained project, and what there is to tell about the training. Raises InputError, and
    what `progress` raises."""
    listener = _Listener(progress)
    project, result = c_void_p(), c_void_p()
    library = _library()
    try:
        with _table(columns) as table, listener.listening():
            status = library.zelstudy_train(table, _options(options), listener.function, None,
                                            byref(project), byref(result))
        listener.check()
    except BaseException:  # may come when the training is over
        library.zelstudy_project_close(project)
        library.zelstudy_result_close(result)
        raise
    _check(status)
    return OpenProject(project), _take(result).document


def sample(**options: Any) -> Result:
    """Points without a project. Raises InputError."""
    return _ask("sample", None, options)


def evaluate(expression: str, definitions: Dict[str, Any]) -> Result:
    """Raises InputError."""
    handle = c_void_p()
    _check(_library().zelstudy_evaluate(_encoded(expression), json.dumps(definitions).encode(),
                                        byref(handle)))
    return _take(handle)
