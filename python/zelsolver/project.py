"""A project file: what it holds, and the predictions of its models."""

from __future__ import annotations

import os
from types import MappingProxyType, TracebackType
from typing import TYPE_CHECKING, Any, Dict, Mapping, Optional, Tuple, Type

import numpy as np
from numpy.typing import NDArray

from . import library as api
from .analyses import Analyses
from .designs import Matrix, as_matrix
from .errors import InputError, ProjectError, UnknownNameError, ZelError
from .findings import (Candidate, Distribution, Residuals, as_candidates, as_correlations,
                       as_distributions, as_residuals)
from .handle import Handle, Path
from .html import project_page
from .predictions import Predictor, as_bounds
from .results import Array, Bounds, NamedArrays
from .study import OpenProject

if TYPE_CHECKING:
    from .plot import Plots

_NO_COP = -1.0  # as the library tells it


class Project(Predictor, Analyses):
    """The trained models of a project file (.vrdb).

        with zelsolver.Project("study.vrdb") as project:
            solution = project.solve({"width": [1.0, 1.5], "height": 2.0})
            print(solution["mass"])

    Designs, the argument X of the predictions, are n x m numbers in the order of `inputs`, or
    columns by name: a DataFrame or a dict (see zelsolver.designs.as_matrix). All values are in the
    units of the study. Values outside the bounds are refused unless a call extrapolates; NaN
    passes, and what it takes part in is NaN.

    Threads may share a project, and their calls run side by side. A call on many designs uses all
    processors by itself, see set_num_threads(). A project can be pickled: the bytes of its file
    travel along.
    """

    def __init__(self, path: Path, hash: Optional[str] = None) -> None:
        """Opens the file.

        hash: the SHA-512 that the file must have, 128 lower-case hexadecimal characters, as
            file_hash() and `zel hash` give it; None does not check.

        Raises ProjectNotFoundError, SignatureError, LibraryNotFoundError, and ProjectError for a
        file that is damaged or holds no models.
        """
        self._start(Handle(path, hash))

    @classmethod
    def from_bytes(cls, contents: bytes, hash: Optional[str] = None) -> "Project":
        """Opens the bytes of a project file, of which a copy is kept in memory. Raises as
        Project()."""
        project = cls.__new__(cls)
        project._start(Handle.from_bytes(contents, hash))
        return project

    def _start(self, handle: Handle, opened: Optional[OpenProject] = None,
               notes: Tuple[str, ...] = ()) -> None:
        super().__init__(handle)
        self._reference: Optional[Mapping[str, float]] = None
        self._opened = opened
        self._document: Any = None
        #: What train() had to tell; empty for a file that was opened.
        self.notes = notes

    # ---- What the project holds

    @property
    def path(self) -> Optional[str]:
        """Absolute path of the file; None for a project from bytes or from a training."""
        return None if self._handle.memory else self._handle.path

    @property
    def hash(self) -> Optional[str]:
        """The hash that the project was opened with."""
        return self._handle.hash

    @property
    def reference(self) -> Mapping[str, float]:
        """The reference (nominal) value of each input, in its unit; NaN where it is not set or no
        number.

        {**project.reference, "width": np.linspace(1, 2)} are designs along one input.
        """
        if self._reference is None:
            self._reference = MappingProxyType(
                {name: self._reference_or_nan(name) for name in self.inputs})
        return self._reference

    def parameter_bounds(self, parameter: str) -> Bounds:
        """The range of any parameter in the project's designs, input of the models or not. Raises
        UnknownNameError, also for a constant parameter."""
        values = np.empty(2)
        self._ask("dzel2_getInputBoundsPerParameter", parameter, values)
        return as_bounds(values)

    def reference_value(self, parameter: str) -> float:
        """The reference value of any parameter; NaN when none is set. Raises UnknownNameError, and
        ZelError when the value is no number, but a text."""
        value = np.empty(1)
        self._ask("dzel2_getReferenceValuePerParameter", parameter, value)
        return float(value[0])

    def cop(self, response: str) -> float:
        """Coefficient of prognosis of a response's model: the part of the response's variation that
        the model predicts in designs it was not trained on, 1 at best. NaN when the project holds
        none. Raises UnknownNameError."""
        return float(self._cops(response)[-1])

    def single_cops(self, response: str) -> Mapping[str, float]:
        """Single coefficient of prognosis of each input: its share in the prediction of a response.
        NaN where the project holds none, as for inputs that the model does not use."""
        return {name: float(cop) for name, cop in zip(self.inputs, self._cops(response))}

    def used_inputs(self, response: str) -> Tuple[str, ...]:
        """The inputs that the model of a response uses; the others were filtered out."""
        filtered = np.empty(len(self.inputs) + 1, np.uint32)
        self._ask("dzel2_getFilteredStatesPerResponse", self._known(response), filtered)
        return tuple(name for name, out in zip(self.inputs, filtered) if not out)

    @property
    def distributions(self) -> Mapping[str, Distribution]:
        """Of the random inputs, by name."""
        return as_distributions(self._described())

    @property
    def correlations(self) -> Mapping[Tuple[str, str], float]:
        """Correlation coefficients of pairs of random inputs; those that are 0 are left out."""
        return as_correlations(self._described())

    @property
    def units(self) -> Mapping[str, str]:
        """Of the inputs that have one, by name."""
        return MappingProxyType({entry["name"]: entry["unit"]
                                 for entry in self._described()["inputs"] if entry.get("unit")})

    def describe(self) -> Dict[str, Any]:
        """All that `zel info --json --candidates` tells, as dicts, lists, texts and numbers: its
        "inputs", "responses", "criteria" and "correlations". A copy, the caller's own."""
        document: Dict[str, Any] = self._study().ask("describe", candidates=True).document
        document["project"] = self.path
        return document

    def candidates(self, response: str) -> Tuple[Candidate, ...]:
        """The models that competed for a response in its training; none when the project does not
        tell. Raises UnknownNameError."""
        name = self._known(response)
        entry, = (e for e in self.describe()["responses"] if e["name"] == name)
        return as_candidates(entry.get("candidates", []))

    def residuals(self) -> Mapping[str, Residuals]:
        """Cross-validated predictions at the designs of the training, by response; without designs
        for a response whose model knows none."""
        return as_residuals(self._study().ask("residuals"))

    def sample(self, n: int, scheme: str = "latin-hypercube-sampling", seed: int = 1
               ) -> NamedArrays:
        """n designs within the bounds of the inputs; random inputs follow their distributions and
        correlations.

        scheme: one of those that `zel sample --help` lists; to some, n is a number of levels

        Raises InputError for a scheme or number that is none.
        """
        result = self._study().ask("sample", scheme=scheme, n=n, seed=seed)
        return NamedArrays(self.inputs, result.arrays["points"], "input")

    @property
    def plot(self) -> "Plots":
        """Pictures, see zelsolver.plot.Plots. Raises ImportError without matplotlib."""
        from .plot import Plots

        return Plots(self)

    # ---- Its bytes

    def to_bytes(self) -> bytes:
        """The bytes of the project file, as it was opened: from_bytes() opens them anywhere. Raises
        ProjectError when the file was changed meanwhile, ClosedError."""
        return self._handle.contents()

    def save(self, path: Path) -> None:
        """Writes the project to a file, which takes the place of an old one in one step. Raises
        InputError when it cannot; the old file is then still there."""
        self._study().save(os.path.abspath(os.fsdecode(path)))

    # ---- Its end

    @property
    def closed(self) -> bool:
        """Whether close() was called."""
        return self._handle.closed

    def close(self) -> None:
        """Releases the project; results and names stay. Happens by itself at the end of a `with`
        block, or when the last reference goes. May be repeated."""
        self._handle.close()

    def __enter__(self) -> "Project":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __reduce__(self) -> Tuple[Any, ...]:
        return _from_bytes, (type(self), self.to_bytes(), self.hash)

    def __repr__(self) -> str:
        state = "closed" if self.closed else f"{len(self.inputs)} inputs"
        return (f"<zelsolver.Project {self._handle.name!r}, {state}, {len(self.responses)} "
                "responses>")

    def _repr_html_(self) -> str:
        return project_page(self)

    # ---- Calls of the libraries

    def _study(self) -> OpenProject:
        """The project in the library of studies, opened by the first question to it."""
        self._handle.check_open()
        if self._opened is None:
            try:
                self._opened = OpenProject.from_bytes(self.to_bytes())
            except InputError as error:
                raise ProjectError(f"{self._handle.name}: {error}", error.status) from None
        return self._opened

    def _input(self, name: str) -> Mapping[str, Any]:
        try:
            inputs = self._described()["inputs"]
        except ZelError:  # predictions do without the other library
            return {}
        return next((entry for entry in inputs if entry["name"] == name), {})

    def _described(self) -> Any:
        if self._document is None:
            self._document = self._study().ask("describe").document
        return self._document

    def _ask(self, function: str, name: str, values: NDArray[Any]) -> None:
        """Fills `values` with what a function tells about a parameter or response."""
        if not isinstance(name, str) or "\0" in name:
            raise UnknownNameError(f"{name!r} is no name")
        try:
            self._handle.call(function, name.encode(errors="replace"), values.ctypes.data)
        except ZelError as error:
            # "Parameter (...) not found.", "No Limits for Parameter (...) found."
            if str(error).endswith("found."):
                raise UnknownNameError(str(error), error.status) from None
            raise

    def _reference_or_nan(self, parameter: str) -> float:
        try:
            return self.reference_value(parameter)
        except ZelError as error:
            if error.status != api.ERROR:
                raise
            return np.nan

    def _cops(self, response: str) -> Array:
        values = np.empty(len(self.inputs) + 1)
        self._ask("dzel2_getCoPValuesPerResponse", self._known(response), values)
        values[values == _NO_COP] = np.nan
        return values


def _from_bytes(kind: Type[Project], contents: bytes, hash: Optional[str]) -> Project:
    return kind.from_bytes(contents, hash)
