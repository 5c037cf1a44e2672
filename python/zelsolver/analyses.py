"""From a project's models to a decision: what matters, what scatters, what is best; and the project
for other eyes and other programs."""

from __future__ import annotations

import os
from typing import Any, Dict, List, Optional, Sequence, Union

from .errors import InputError
from .handle import Path
from .progress import Wish, listener
from .study import OpenProject

#: One text or several
Texts = Union[str, Sequence[str]]


class Analyses:
    """Methods of a project, each as the command of `zel` of that name. They return the documents
    that the command prints with --json, as dicts, lists, texts and numbers (None where there is no
    number); keywords are the options of the function zelstudy_NAME() in zelsolver/study.h, with its
    defaults.

    progress: as of train(); what it raises, and Ctrl-C, end the work.

    All raise InputError, which names the option, name or limit that is wrong.
    """

    def _study(self) -> OpenProject:
        raise NotImplementedError

    def sensitivity(self, *, progress: Wish = None, **options: Any) -> Dict[str, Any]:
        """Sobol' indices: the shares of the variance of each response and criterion ("quantities")
        that each input explains, "first" by itself and "total" with its interactions.

        n: rows of a base sample; second_order; distributions: "x:normal(12, 0.6)"; fixed: "x=5"
        """
        return self._analyse("sensitivity", progress, options)

    def propagate(self, *, progress: Wish = None, **options: Any) -> Dict[str, Any]:
        """How responses and criteria scatter when the inputs do ("quantities"), and how likely each
        limit is violated ("limits").

        n; scheme; until: a relative precision; model_error; distributions; fixed; quantiles; form
        """
        return self._analyse("propagate", progress, options)

    def optimize(self, minimize: Texts = (), maximize: Texts = (), *, progress: Wish = None,
                 **options: Any) -> Dict[str, Any]:
        """The best design ("inputs", "quantities") within the limits; for two or three objectives a
        "front"; with next=N designs to analyse next. Look at "status": a design that breaks a limit
        is never "optimal" or "feasible".

        minimize, maximize: responses, criteria or expressions
        limits: "max(abs(stress)) <= 20"; bounds: "x:0:10"; fixed; robust; next; seed
        """
        return self._analyse("optimize", progress,
                             {"minimize": minimize, "maximize": maximize, **options})

    def export(self, format: str = "json", path: Optional[Path] = None, *,
               responses: Optional[Texts] = None, name: Optional[str] = None) -> Dict[str, Any]:
        """The models for other programs: a description ("json"), or source text that needs neither
        this package nor the library ("c", "python"). It is written to `path`, or is "text" of what
        is returned; "warnings" tells what could not go along.

        name: what names in C begin with
        """
        return self._analyse("export", False, {"format": format, "name": name,
                                               "responses": responses, "out": _absolute(path)})

    def report(self, path: Path, *, analyses: Texts = (), minimize: Texts = (),
               maximize: Texts = (), progress: Wish = None) -> Dict[str, Any]:
        """Writes one page for a browser that needs no network: models that answer, their quality,
        the designs.

        analyses: of "sensitivity", "propagate" and "optimize", which takes `minimize`, `maximize`
        """
        return self._analyse("report", progress, {
            "out": _absolute(path), "with": analyses, "minimize": minimize, "maximize": maximize})

    def _analyse(self, function: str, progress: Wish, options: Dict[str, Any]) -> Dict[str, Any]:
        for key in _LISTS.intersection(options):
            if options[key] is not None:
                options[key] = _texts(key, options[key])
        study = self._study()
        with listener(progress) as hear:
            document: Dict[str, Any] = study.work(function, hear, **options).document
        return document


_LISTS = {"minimize", "maximize", "limits", "bounds", "fixed", "distributions", "criteria",
          "responses", "with"}


def _texts(key: str, value: Texts) -> List[str]:
    if isinstance(value, str):
        return [value]
    try:
        return [str(text) for text in value]
    except TypeError:
        raise InputError(f"{key}: {value!r} is neither a text nor a sequence of texts") from None


def _absolute(path: Optional[Path]) -> Optional[str]:
    return None if path is None else os.path.abspath(os.fsdecode(path))
