"""From a table of designs to the project with its models."""

from __future__ import annotations

import fnmatch
from typing import Any, List, Mapping, Optional, Sequence, Union

from .errors import InputError
from .handle import Handle
from .progress import Wish, listener
from .project import Project
from .study import train as train_study
from .tables import as_columns

Names = Union[str, Sequence[Any]]


def train(frame: Any, inputs: Names, responses: Names,
          criteria: Union[Mapping[str, str], Sequence[str], None] = None, *, discrete: Names = (),
          dates: Names = (), ignored: Names = (), skip_incomplete: bool = False, seed: int = 1,
          budget: float = 60.0, progress: Wish = None) -> Project:
    """Trains a model for each response, as `zel train` does: regressions, moving least squares and
    kriging compete over subsets of the inputs, and the coefficient of prognosis decides.

    frame: the designs, a row each: a DataFrame, a dict of columns, a structured array; an array
        whose columns are the inputs, then the responses; or a pair of arrays (X, Y) for them. A
        response that is missing (NaN, None, pandas.NA) says that the design failed for it alone
    inputs, responses: names of columns, or patterns such as "x_*"; "all" are all that are no
        responses
    criteria: {"cost": "3*mass + load", "limit": "stress <= 25"}, or a sequence of
        "cost: 3*mass + load"
    discrete: inputs that take the values of the table and no others
    dates: columns of dates as text, which become days since 1970-01-01; those of datetime64 do so
        by themselves
    ignored: columns that patterns and "all" leave out
    skip_incomplete: leave rows out that lack an input, in place of refusing them
    seed: of the groups of the cross-validation; the same seed gives the same models
    budget: seconds that the training may take, roughly, on one core of a common machine; counted
        in operations, so that the same budget gives the same models
    progress: True or False; None shows it in a notebook and on a terminal; or a function of the
        share that is done (0 to 1, negative while unknown) and what is in work, which may raise to
        end the training

    Ctrl-C ends the training with KeyboardInterrupt, and nothing stays behind.

    Raises InputError, which tells what is wrong in which column.
    """
    inputs, responses = _names("inputs", inputs), _names("responses", responses)
    columns, converted = as_columns(frame, inputs, responses)
    options = {
        "inputs": inputs, "responses": responses, "ignored": _names("ignored", ignored),
        "discrete": _names("discrete", discrete),
        "dates": _dates(_names("dates", dates), converted, [*inputs, *responses],
                        _names("ignored", ignored)),
        "criteria": _criteria(criteria), "skip_incomplete": bool(skip_incomplete), "seed": seed,
        "budget": budget,
    }
    with listener(progress) as hear:
        opened, document = train_study(columns, options, hear)
    project = Project.__new__(Project)
    project._start(Handle.from_bytes(opened.contents()), opened, tuple(document["notes"]))
    return project


def _names(what: str, names: Names) -> List[str]:
    if isinstance(names, str):
        return [names]
    try:
        return [str(name) for name in names]
    except TypeError:
        raise InputError(f"{what}: {names!r} is neither a name nor a sequence of names") from None


def _dates(named: List[str], converted: List[str], chosen: List[str], ignored: List[str]
           ) -> List[str]:
    """The names of the columns of dates that the training takes: those that the caller names, and
    those `converted` that are chosen by name or pattern."""
    def fits(name: str, patterns: List[str]) -> bool:
        return any(fnmatch.fnmatchcase(name, p.replace("[", "[[]")) for p in patterns)

    found = [name for name in converted if name in chosen or not fits(name, ignored) and (
        "all" in chosen or fits(name, chosen))]
    return [*named, *(name for name in found if not fits(name, named))]


def _criteria(criteria: Union[Mapping[str, str], Sequence[str], None]) -> Optional[List[str]]:
    if criteria is None or not isinstance(criteria, Mapping):
        return None if criteria is None else _names("criteria", criteria)
    return [f"{name}: {text}" for name, text in criteria.items()]
