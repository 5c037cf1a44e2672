"""Results by name. All arrays belong to the caller: they live on after the project is closed."""

from __future__ import annotations

from types import MappingProxyType
from typing import Any, Dict, Iterator, Mapping, NamedTuple, Optional, Sequence, Tuple

import numpy as np
from numpy.typing import NDArray

from .errors import unknown_name
from .html import solution_page

Array = NDArray[np.float64]


class Bounds(NamedTuple):
    """Range of one parameter in the project's designs, in its unit."""

    lower: float
    upper: float


class LocalErrors(NamedTuple):
    """Cross-validated errors of a model around each of n designs: averages over the support points,
    weighted by their nearness."""

    #: (n,) local coefficient of prognosis: 1 is a perfect prediction, 0 a useless one
    local_cop: Array
    #: (n,) root mean square error, in the unit of the response
    rmse: Array
    #: (n,) mean error, in the unit of the response
    mean_error: Array
    #: (n,) mean absolute error, in the unit of the response
    mean_abs_error: Array


class NamedArrays(Mapping[str, Array]):
    """The columns of an array, by name: `arrays["mass"]` is an array of n values.

    `numpy.asarray(arrays)` and `arrays.array` are the whole, n x K, its columns in the order of
    `arrays.names`. Both are views of the same memory.
    """

    __slots__ = ("array", "names", "_kind", "_columns")

    def __init__(self, names: Sequence[str], array: Array, kind: str) -> None:
        #: n x K
        self.array = array
        #: K names
        self.names: Tuple[str, ...] = tuple(names)
        self._kind = kind
        #: positions of the names, made at the first question for one
        self._columns: Optional[Dict[str, int]] = None

    def __getitem__(self, name: str) -> Array:
        if self._columns is None:
            self._columns = {known: k for k, known in enumerate(self.names)}
        try:
            column: Array = self.array[:, self._columns[name]]
        except (KeyError, TypeError):
            raise unknown_name(self._kind, name, self.names) from None
        return column

    def __iter__(self) -> Iterator[str]:
        return iter(self.names)

    def __len__(self) -> int:
        return len(self.names)

    def __array__(self, dtype: Any = None, copy: Optional[bool] = None) -> Array:
        array = self.array if dtype is None else self.array.astype(dtype, copy=False)
        return array.copy() if copy else array

    def __reduce__(self) -> Tuple[Any, ...]:
        return type(self), (self.names, self.array, self._kind)

    def __repr__(self) -> str:
        return f"NamedArrays({dict(self)!r})"


class Solution(Mapping[str, Array]):
    """What Project.solve() predicts at n designs.

    `solution["mass"]` is a response or, if none has this name, a criterion: n values in its unit,
    NaN where it could not be computed. It can be pickled.
    """

    __slots__ = ("responses", "criteria", "density", "errors", "refused", "index")

    def __init__(self, responses: NamedArrays, criteria: NamedArrays, density: NamedArrays,
                 errors: Mapping[str, LocalErrors], refused: Mapping[str, str],
                 index: Any) -> None:
        self.responses = responses
        #: Without names unless asked for, as are `density` and `errors`.
        self.criteria = criteria
        #: By response, see Project.density().
        self.density = density
        #: By response, see Project.errors().
        self.errors: Mapping[str, LocalErrors] = MappingProxyType(dict(errors))
        #: Responses whose density and errors are NaN because the model knows none, and why.
        self.refused: Mapping[str, str] = MappingProxyType(dict(refused))
        #: Index of the DataFrame that was solved, else None.
        self.index = index

    def __getitem__(self, name: str) -> Array:
        if name in self.responses:
            return self.responses[name]
        if name in self.criteria:
            return self.criteria[name]
        raise unknown_name("response or criterion", name, tuple(self))

    def __iter__(self) -> Iterator[str]:
        yield from self.responses
        yield from (name for name in self.criteria if name not in self.responses)

    def __len__(self) -> int:
        return sum(1 for _ in self)

    def __reduce__(self) -> Tuple[Any, ...]:
        return type(self), (self.responses, self.criteria, self.density, dict(self.errors),
                            dict(self.refused), self.index)

    def __repr__(self) -> str:
        return f"Solution({dict(self)!r})"

    def _repr_html_(self) -> str:
        return solution_page(self)

    def to_frame(self) -> Any:
        """A pandas DataFrame with a row for each design and the columns that `zel solve` writes:
        responses, criteria, then "mass:density", "mass:local_cop", ... It has the index of the
        DataFrame that was solved. Raises ImportError without pandas."""
        import pandas

        return pandas.DataFrame(self._columns(), index=self.index)

    def to_array(self) -> Array:
        """n x K, the columns of to_frame()."""
        return np.column_stack(list(self._columns().values()))

    def columns(self) -> Tuple[str, ...]:
        """The names of the K columns of to_frame()."""
        return tuple(self._columns())

    def _columns(self) -> Dict[str, Array]:
        columns: Dict[str, Array] = dict(self)
        for name in self.responses:
            if name in self.density:
                columns[f"{name}:density"] = self.density[name]
            if name in self.errors:
                for error, values in self.errors[name]._asdict().items():
                    columns[f"{name}:{error}"] = values
        return columns
