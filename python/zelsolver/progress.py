"""Shows how far a long call is: in a notebook or on a terminal, with tqdm where it is installed."""

from __future__ import annotations

import contextlib
import sys
import warnings
from typing import Any, Iterator, Optional, Union

from .study import Progress

#: What a caller may say: None shows progress where somebody sees it.
Wish = Union[None, bool, Progress]


@contextlib.contextmanager
def listener(wish: Wish) -> Iterator[Optional[Progress]]:
    """The function that shows what a caller wishes, until the end of the block."""
    if callable(wish):
        yield wish
        return
    if not (_somebody_sees() if wish is None else wish):
        yield None
        return
    bar = _bar()
    try:
        yield bar
    finally:
        bar.close()


def _somebody_sees() -> bool:
    shell = sys.modules.get("IPython")
    kernel = shell is not None and getattr(shell.get_ipython(), "kernel", None) is not None
    return kernel or bool(sys.stderr and sys.stderr.isatty())


def _bar() -> "Union[_TqdmBar, _TextBar]":
    try:
        with warnings.catch_warnings():  # a notebook without widgets gets a bar of text
            warnings.simplefilter("ignore")
            from tqdm.auto import tqdm
    except ImportError:
        return _TextBar()
    return _TqdmBar(tqdm(total=100, unit="%", bar_format="{l_bar}{bar}| {elapsed} {postfix}",
                         leave=False))


class _TqdmBar:
    def __init__(self, bar: Any) -> None:
        self._bar = bar
        self._text = ""

    def __call__(self, share: float, text: str) -> None:
        if share > 0:
            self._bar.n = round(100 * share, 1)
        if text != self._text:
            self._text = text
            self._bar.set_postfix_str(text)
        else:
            self._bar.update(0)  # draws when it is time

    def close(self) -> None:
        self._bar.close()


class _TextBar:
    """One line on standard error, written over again."""

    def __init__(self) -> None:
        self._width = 0

    def __call__(self, share: float, text: str) -> None:
        line = f"{100 * share:3.0f} % {text}" if share >= 0 else text
        sys.stderr.write("\r" + line.ljust(self._width))
        sys.stderr.flush()
        self._width = len(line)

    def close(self) -> None:
        if self._width:
            sys.stderr.write("\r" + " " * self._width + "\r")
            sys.stderr.flush()
