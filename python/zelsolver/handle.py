"""Handles of open projects.

The library keeps one open project for each spelling of a path until all are closed together, does
not look at the file again meanwhile, and then wants a hash with every call or with none. Handles
make of this what a caller of Python expects: each sees the file as it stood when the handle was
opened, with a hash or without, and memory is released when handles are closed.

To this end a file that was changed since it was opened, or that is open in the other way, is opened
under another spelling, with "/." inserted ("/data/./study.vrdb").
"""

from __future__ import annotations

import collections
import ctypes
import hashlib
import itertools
import os
import weakref
from typing import Any, Counter, Deque, Dict, NamedTuple, Optional, Tuple, Union

from .errors import ClosedError, ProjectError, ProjectNotFoundError, SignatureError, ZelError
from .library import Library, get_library

Path = Union[str, "os.PathLike[str]"]

_WRONG_SIGNATURE = "File seems to be corrupt. Signature is invalid or missing"
_NOT_INITIALIZED = "Initializing new solver failed."

#: So many projects without handles may stay open in the library as long as others have handles:
#: closing them means to read those others again.
_MAX_UNUSED = 8


class _State(NamedTuple):
    """Of a file, as far as its metadata tell; and whether it is opened with a hash."""

    device: int
    inode: int
    size: int
    modified: int
    changed: int
    signed: bool


def _state(path: str, signed: bool) -> _State:
    """Raises OSError, or ValueError for a NUL in the path."""
    status = os.stat(path)
    return _State(status.st_dev, status.st_ino, status.st_size, status.st_mtime_ns,
                  status.st_ctime_ns, signed)


class _OpenFiles:
    """What is open in the library. The caller of each function holds the library's lock."""

    def __init__(self) -> None:
        self._opened: Dict[str, _State] = {}  # by spelling; the library may know it
        self._users: Counter[str] = collections.Counter()  # handles of each spelling, none is 0
        self._hashes: Dict[str, Optional[bytes]] = {}  # of the spellings that have handles
        #: Spellings of handles that the garbage collector took away; it must not wait for the lock.
        self.dropped: Deque[str] = collections.deque()

    def open(self, library: Library, path: str, state: _State, hash: Optional[bytes]) -> str:
        """The spelling under which the file in this state is open, for one more handle."""
        self.close(library)  # the dropped ones
        folder, name = os.path.split(path)
        spelling = next(s for s in (os.path.join(folder, "./" * i + name)
                                    for i in itertools.count())
                        if self._opened.get(s, state) == state)
        self._opened[spelling] = state
        try:
            library.call("dzel2_hasSurrogate_hash", spelling.encode(), hash)
        except BaseException:
            self._tidy(library)
            raise
        self._users[spelling] += 1
        self._hashes[spelling] = hash
        return spelling

    def close(self, library: Library, *spellings: str) -> None:
        """Takes one handle from each of these, and the dropped ones."""
        self._users.subtract(spellings)
        while self.dropped:
            self._users[self.dropped.popleft()] -= 1
        self._users = +self._users
        self._tidy(library)

    def _tidy(self, library: Library) -> None:
        """Closes what has no handles, when it is worth it and costs no handle its file."""
        unused = len(self._opened) - len(self._users)
        if unused == 0 or self._users and (unused < _MAX_UNUSED or self._any_changed()):
            return
        library.close_all()
        self._opened = {s: state for s, state in self._opened.items() if s in self._users}
        self._hashes = {s: hash for s, hash in self._hashes.items() if s in self._users}
        for spelling, hash in self._hashes.items():
            try:
                library.call("dzel2_hasSurrogate_hash", spelling.encode(), hash)
            except ZelError:
                pass  # removed just now; the next call on it says so

    def _any_changed(self) -> bool:
        try:
            return any(_state(s, self._opened[s].signed) != self._opened[s] for s in self._users)
        except OSError:
            return True


_open_files = _OpenFiles()


def _absolute(path: Path) -> str:
    text = os.path.abspath(os.fsdecode(path))
    try:
        text.encode()
    except UnicodeEncodeError:
        raise ProjectError(f"{text!r}: the path is not valid UTF-8") from None
    return text


def _explained(name: str, error: ZelError) -> ProjectError:
    text = str(error)
    if text == _WRONG_SIGNATURE:
        return SignatureError(f"{name}: {text}", error.status)
    if text == _NOT_INITIALIZED:
        text += " The library's log, on standard error, says why."
    return ProjectError(f"{name}: {text}", error.status)


class _MemoryFile:
    """A file without a name in any folder, readable by its path as long as this object lives."""

    def __init__(self, contents: bytes) -> None:
        self._descriptor = os.memfd_create("zelsolver")
        self.path = f"/proc/self/fd/{self._descriptor}"
        weakref.finalize(self, os.close, self._descriptor)
        with open(self._descriptor, "wb", closefd=False) as file:
            file.write(contents)


class Handle:
    """An open project file, to which calls of the library go. Threads may share it."""

    def __init__(self, path: Path, hash: Optional[str] = None,
                 memory: Optional[_MemoryFile] = None) -> None:
        """Opens the file. Raises ProjectError, SignatureError, LibraryNotFoundError."""
        self.path = _absolute(path)
        self.hash = hash
        #: The file, if it is none on a disk.
        self.memory = memory
        #: What messages call the project.
        self.name = self.path if memory is None else "the project in memory"
        self.library = get_library()
        self._hash = None if hash is None else hash.encode(errors="replace")
        try:
            state = self._opened_state = _state(self.path, hash is not None)
        except FileNotFoundError:
            raise ProjectNotFoundError(self.path) from None
        except (OSError, ValueError) as error:
            raise ProjectError(f"{self.name}: {getattr(error, 'strerror', error)}") from None
        with self.library.lock:
            try:
                self._spelling = _open_files.open(self.library, self.path, state, self._hash)
            except ZelError as error:
                raise _explained(self.name, error) from None
        self._encoded = self._spelling.encode()
        self._closed = False
        self._released = False
        #: One entry for each call that runs; appending and popping need no lock.
        self._calls: Deque[None] = collections.deque()

    @classmethod
    def from_bytes(cls, contents: bytes, hash: Optional[str] = None) -> "Handle":
        """Opens these bytes of a project file. Raises as Handle()."""
        memory = _MemoryFile(contents)
        return cls(memory.path, hash, memory)

    @property
    def closed(self) -> bool:
        return self._closed

    def close(self) -> None:
        """Calls that run finish, and the last of them releases the file. May be repeated."""
        self._closed = True
        self._release()

    def _release(self) -> None:
        with self.library.lock:
            if not self._calls and not self._released:
                self._released = True
                _open_files.close(self.library, self._spelling)

    def close_with(self, owner: object) -> None:
        """Closes the handle when `owner` is collected, or the program ends."""
        weakref.finalize(owner, self._drop)

    def _drop(self) -> None:
        """The garbage collector may run inside a call: this never waits. If the lock is taken, the
        next opening or closing does the work."""
        if self._closed:
            return
        self._closed = self._released = True
        _open_files.dropped.append(self._spelling)
        if self.library.lock.acquire(blocking=False):
            try:
                _open_files.close(self.library)
            finally:
                self.library.lock.release()

    def call(self, name: str, *arguments: Any) -> None:
        """Calls the `_hash` form of `name`, with this project's path before the arguments and its
        hash behind them. Raises ZelError with the library's text, ClosedError, MemoryError."""
        self._calls.append(None)  # before the look at _closed: closing looks the other way round
        try:
            self.check_open()
            self.library.call(name + "_hash", self._encoded, *arguments, self._hash)
        finally:
            self._calls.pop()
            if self._closed:
                self._release()

    def names(self, selector: int) -> Tuple[str, ...]:
        """The names of inputs, outputs or criteria. Raises as call()."""
        count, block = ctypes.c_uint(), ctypes.c_void_p()
        self.call("dzel2_getDimensions", selector, ctypes.addressof(count), 1)
        self.call("dzel2_getNames", selector, ctypes.addressof(block))
        return self.library.take_names(block, count.value)

    def check_open(self) -> None:
        if self._closed:
            raise ClosedError(f"{self.name}: the project is closed")

    def contents(self) -> bytes:
        """The bytes of the file as it was opened. Raises ProjectError when it is another by now,
        ClosedError."""
        self.check_open()
        try:
            with open(self.path, "rb") as file:
                contents = file.read()
            unchanged = _state(self.path, self._opened_state.signed) == self._opened_state
        except OSError as error:
            raise ProjectError(f"{self.name}: {error.strerror}") from None
        if not unchanged:
            raise ProjectError(f"{self.name}: the file was changed since it was opened")
        return contents


def file_hash(path: Path) -> str:
    """SHA-512 of a file as 128 lower-case hexadecimal characters: the `hash` of Project()."""
    digest = hashlib.sha512()
    with open(path, "rb") as file:
        for block in iter(lambda: file.read(1 << 20), b""):
            digest.update(block)
    return digest.hexdigest()
