"""Predictions of the models of an open project."""

from __future__ import annotations

import functools
from types import MappingProxyType
from typing import (Any, Callable, Dict, List, Mapping, Optional, Sequence, Tuple, TypeVar, Union,
                    overload)

import numpy as np

from . import library as api
from .blocks import Part, address, in_blocks
from .designs import Matrix, as_matrix
from .errors import BoundsError, ModelError, ZelError, unknown_name
from .handle import Handle
from .results import Array, Bounds, LocalErrors, NamedArrays, Solution

_TOLERANCE = 1e-8  # of the library's bounds check
_NO_BOUND = np.finfo(np.float64).max  # as the library tells it

_T = TypeVar("_T")


class Predictor:
    """The models of an open project: their names, and what they predict."""

    def __init__(self, handle: Handle) -> None:
        """Takes the handle, which is closed when this is collected. Raises ZelError, and closes
        it."""
        self._handle = handle
        self._handle.close_with(self)
        try:
            self._inputs = self._handle.names(api.INPUTS)
            self._responses = self._handle.names(api.OUTPUTS)
            self._criteria = self._handle.names(api.CRITERIA)
        except BaseException:
            self._handle.close()
            raise
        #: What solve() gets, without criteria and with them.
        self._parts = (Part(len(self._responses), False),)
        self._all_parts = (*self._parts, Part(len(self._criteria), True))
        self._bounds: Optional[Mapping[str, Bounds]] = None
        self._refusals: Dict[Tuple[str, str], str] = {}  # by quantity and response

    @property
    def inputs(self) -> Tuple[str, ...]:
        """Names of the m inputs of the models."""
        return self._inputs

    @property
    def responses(self) -> Tuple[str, ...]:
        """Names of the responses that have models; "stress[0]" is an element of a vector."""
        return self._responses

    @property
    def criteria(self) -> Tuple[str, ...]:
        """Names of the criteria."""
        return self._criteria

    @property
    def bounds(self) -> Mapping[str, Bounds]:
        """(lower, upper) of each input in the project's designs, in its unit: what a prediction
        accepts without extrapolation. An input without bounds has -inf, inf."""
        if self._bounds is None:
            values = np.empty((len(self.inputs), 2))
            self._handle.call("dzel2_getInputBounds", values.ctypes.data)
            self._bounds = MappingProxyType(
                {name: as_bounds(pair) for name, pair in zip(self.inputs, values)})
        return self._bounds

    # ---- Predictions

    def solve(self, X: Any, criteria: bool = True, errors: bool = False, density: bool = False,
              extrapolate: bool = False) -> Solution:
        """Predicts the responses at n designs.

        X: the designs
        criteria: evaluate the criteria, too
        errors, density: add these for each response, see errors() and density()
        extrapolate: accept values outside the bounds

        What a model or a criterion cannot compute is NaN in its place, as are errors and density of
        a model that knows none (`refused` of the result says why).

        Raises InputError, BoundsError, ClosedError.
        """
        designs = self._designs(X)
        flags = api.SOLVE_RESPONSES | (api.SOLVE_EXTRAPOLATE if extrapolate else 0)
        parts: Sequence[Part] = self._parts
        if criteria and self._criteria:
            flags |= api.SOLVE_CRITERIA
            parts = self._all_parts

        def call(block: Matrix, out: Array) -> None:
            self._handle.call("dzel2_solve", len(block), address(block), block.size, flags,
                              address(out), out.size)

        values = self._evaluate(designs, parts, extrapolate, call)
        trust, refused = self._trust_all(designs, errors, density, extrapolate)
        return Solution(
            NamedArrays(self.responses, values[0], "response"),
            NamedArrays(self.criteria, values[1], "criterion") if len(values) > 1
            else _not_asked("criterion (criteria=True evaluates them)", len(designs)),
            self._densities(trust, len(designs)) if density
            else _not_asked("density (density=True adds it)", len(designs)),
            {name: _as_errors(t[-1]) for name, t in trust.items()} if errors else {},
            refused, getattr(X, "index", None) if hasattr(X, "columns") else None)

    def predict(self, X: Any, *, extrapolate: bool = False) -> NamedArrays:
        """The responses at n designs, without anything else: n x R values. Raises as solve()."""
        return self.solve(X, criteria=False, extrapolate=extrapolate).responses

    @overload
    def gradients(self, X: Any, response: str, *, extrapolate: bool = ...) -> NamedArrays: ...

    @overload
    def gradients(self, X: Any, response: None = ..., *,
                  extrapolate: bool = ...) -> Mapping[str, NamedArrays]: ...

    def gradients(self, X: Any, response: Optional[str] = None, *, extrapolate: bool = False
                  ) -> Union[NamedArrays, Mapping[str, NamedArrays]]:
        """Derivatives of a response with respect to the inputs at n designs, in the unit of the
        response over that of the input; 0 for inputs that its model does not use.

        `gradients(X, "mass")["width"]` are n values, `.array` is n x m. Raises ModelError when the
        model knows no gradients, as thin plate splines. Without a response: those of each response
        by its name, NaN where its model knows none.
        """
        designs = self._designs(X)
        parts = [Part(len(self.inputs), True)]

        def one(name: str) -> NamedArrays:
            values, = self._evaluate_response(designs, name, api.RESPONSE_GRADIENTS, parts,
                                              extrapolate)
            return NamedArrays(self.inputs, values, "input")

        if response is not None:
            return one(self._known(response))
        everything, _ = self._ask_all("gradients", one)
        return {name: NamedArrays(self.inputs, np.full(designs.shape, np.nan), "input")
                if gradients is None else gradients for name, gradients in everything.items()}

    @overload
    def errors(self, X: Any, response: str, *, extrapolate: bool = ...) -> LocalErrors: ...

    @overload
    def errors(self, X: Any, response: None = ..., *,
               extrapolate: bool = ...) -> Mapping[str, LocalErrors]: ...

    def errors(self, X: Any, response: Optional[str] = None, *, extrapolate: bool = False
               ) -> Union[LocalErrors, Mapping[str, LocalErrors]]:
        """How far a response's model can be trusted at n designs: its cross-validated errors there,
        see LocalErrors.

        Raises ModelError when the model knows no errors, as thin plate splines. Without a response:
        those of each response by its name, NaN where its model knows none.
        """
        designs = self._designs(X)
        if response is not None:
            return _as_errors(self._trust(designs, self._known(response), True, False,
                                          extrapolate)[-1])
        trust, _ = self._trust_all(designs, True, False, extrapolate)
        return {name: _as_errors(values[-1]) for name, values in trust.items()}

    @overload
    def density(self, X: Any, response: str, *, extrapolate: bool = ...) -> Array: ...

    @overload
    def density(self, X: Any, response: None = ..., *,
                extrapolate: bool = ...) -> NamedArrays: ...

    def density(self, X: Any, response: Optional[str] = None, *, extrapolate: bool = False
                ) -> Union[Array, NamedArrays]:
        """How closely the support points of a response's model lie around n designs: their number,
        each weighted by a Gaussian of its distance; (n,) values without unit, near 0 where the
        model knows nothing. Not a probability density.

        Raises ModelError when the model knows no density, as thin plate splines. Without a
        response: those of each response by its name, NaN where its model knows none.
        """
        designs = self._designs(X)
        if response is not None:
            values, = self._trust(designs, self._known(response), False, True, extrapolate)
            return values[:, 0]
        trust, _ = self._trust_all(designs, False, True, extrapolate)
        return self._densities(trust, len(designs))

    # ---- Calls of the library

    def _known(self, response: str) -> str:
        if response not in self.responses:
            raise unknown_name("response", response, self.responses)
        return response

    def _designs(self, X: Any) -> Matrix:
        self._handle.check_open()  # also when there are no designs to ask the library about
        return as_matrix(X, self.inputs, self._input)

    def _input(self, name: str) -> Mapping[str, Any]:
        """What the project tells about an input: its "words", and of dates "days_since"."""
        return {}

    def _evaluate(self, designs: Matrix, parts: Sequence[Part], extrapolate: bool,
                  call: Callable[[Matrix, Array], None]) -> List[Array]:
        """The values that `call` delivers for these designs, n x width for each part."""
        try:
            return in_blocks(designs, parts, call)
        except ZelError as error:
            if error.status is None:
                raise
            if not extrapolate:
                self._raise_bounds_error(designs, str(error))
            raise ModelError(str(error), error.status) from None

    def _raise_bounds_error(self, designs: Matrix, text: str) -> None:
        """Raises BoundsError when a value is outside, as the library counts it."""
        bounds = np.array(list(self.bounds.values())).reshape(-1, 2)
        outside = (designs < bounds[:, 0] - _TOLERANCE) | (designs > bounds[:, 1] + _TOLERANCE)
        if outside.any():
            row = int(outside.any(axis=1).argmax())
            i = int(outside[row].argmax())
            raise BoundsError(text, row, self.inputs[i], float(designs[row, i]),
                              self.bounds[self.inputs[i]]) from None

    def _evaluate_response(self, designs: Matrix, response: str, flags: int, parts: List[Part],
                           extrapolate: bool) -> List[Array]:
        name = response.encode()
        if extrapolate:
            flags |= api.RESPONSE_EXTRAPOLATE

        def call(block: Matrix, out: Array) -> None:
            self._handle.call("dzel2_get_per_response", len(block), address(block), block.size,
                              name, flags, address(out), out.size)

        return self._evaluate(designs, parts, extrapolate, call)

    def _trust(self, designs: Matrix, response: str, errors: bool, density: bool,
               extrapolate: bool) -> List[Array]:
        """Density (n x 1) and errors (n x 4) of one response, those that are asked for."""
        flags, parts = 0, []
        if density:
            flags |= api.RESPONSE_DENSITIES
            parts.append(Part(1, True))
        if errors:
            flags |= api.RESPONSE_ERRORS
            parts.append(Part(len(LocalErrors._fields), True))
        return self._evaluate_response(designs, response, flags, parts, extrapolate)

    def _trust_all(self, designs: Matrix, errors: bool, density: bool, extrapolate: bool
                   ) -> Tuple[Dict[str, List[Array]], Dict[str, str]]:
        """_trust() of each response, NaN where its model refuses; and the refusals.

        One response at a time: the library's call for all of them fails when one model refuses.
        """
        if not errors and not density:
            return {}, {}
        trust, refused = self._ask_all(
            "errors", lambda name: self._trust(designs, name, errors, density, extrapolate))
        widths = [1] * density + [len(LocalErrors._fields)] * errors
        return {name: [np.full((len(designs), width), np.nan) for width in widths]
                if values is None else values for name, values in trust.items()}, refused

    def _ask_all(self, what: str, ask: Callable[[str], _T]
                 ) -> Tuple[Dict[str, Optional[_T]], Dict[str, str]]:
        """What `ask` returns for each response, None where its model refuses; and the refusals.

        A model that refused is not asked again: the library logs each refusal.
        """
        results: Dict[str, Optional[_T]] = {}
        for name in self.responses:
            results[name] = None
            if (what, name) in self._refusals:
                continue
            try:
                results[name] = ask(name)
            except ModelError as error:
                self._refusals[what, name] = str(error)
        return results, {name: self._refusals[what, name] for name, result in results.items()
                         if result is None}

    def _densities(self, trust: Dict[str, List[Array]], n: int) -> NamedArrays:
        array = np.empty((n, len(self.responses)), order="F")
        for k, name in enumerate(self.responses):
            array[:, k] = trust[name][0][:, 0]
        return NamedArrays(self.responses, array, "response")


def as_bounds(pair: Array) -> Bounds:
    lower, upper = (float(value) for value in pair)
    return Bounds(-np.inf if lower == _NO_BOUND else lower, np.inf if upper == _NO_BOUND else upper)


def _as_errors(values: Array) -> LocalErrors:
    return LocalErrors(*values.T)


@functools.lru_cache(maxsize=64)  # without names and numbers, so that results may share it
def _not_asked(kind: str, n: int) -> NamedArrays:
    return NamedArrays((), np.empty((n, 0)), kind)
