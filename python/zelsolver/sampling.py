"""Points at which to evaluate a study."""

from __future__ import annotations

from typing import Any, List, Mapping, Sequence, Union

import numpy as np

from .errors import InputError
from .results import NamedArrays
from .study import sample as sample_study


def sample(inputs: Mapping[str, Union[Sequence[Any], str]], n: int,
           scheme: str = "latin-hypercube-sampling", seed: int = 1) -> NamedArrays:
    """Points of a study of these inputs, as `zel sample` makes them; Project.sample() samples those
    of a project.

    inputs: by name, (lower, upper) of a continuous input, or a list or set of all states of a
        discrete one, numbers or words: {"width": (1.0, 2.5), "steel": ["S235", "S355"]}
    n: number of points; of levels, steps or the degree for some schemes
    scheme: one of those that `zel sample --help` lists
    seed: the same seed gives the same points

    Gives n x m values, by input; words are their positions 0, 1, ... among the states. Raises
    InputError.
    """
    texts = [_text(name, range_) for name, range_ in inputs.items()]
    result = sample_study(inputs=texts, scheme=scheme, n=n, seed=seed)
    return NamedArrays(tuple(inputs), result.arrays["points"], "input")


def _text(name: str, states: Any) -> str:
    """As `zel sample --inputs` takes it."""
    if isinstance(states, tuple):
        if len(states) != 2:
            raise InputError(f'input "{name}": {states!r} is no range: expected (lower, upper), or '
                             "a list of states")
        return f"{name}:{_number(name, states[0])}:{_number(name, states[1])}"
    if isinstance(states, (str, bytes)) or not hasattr(states, "__iter__"):
        raise InputError(f'input "{name}": {states!r} is neither a range (lower, upper) nor a list '
                         "of states")
    listed: List[Any] = sorted(states) if isinstance(states, (set, frozenset)) else list(states)
    return name + ":{" + ";".join(s if isinstance(s, str) else _number(name, s)
                                  for s in listed) + "}"


def _number(name: str, value: Any) -> str:
    try:
        return repr(float(np.float64(value)))
    except (TypeError, ValueError):
        raise InputError(f'input "{name}": {value!r} is not a real number') from None
