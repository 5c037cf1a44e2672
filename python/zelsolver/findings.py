"""What a project tells about itself, as values of Python."""

from __future__ import annotations

from types import MappingProxyType
from typing import Any, Dict, List, Mapping, NamedTuple, Tuple

import numpy as np

from .results import Array
from .study import Result


class Distribution(NamedTuple):
    """Of a random input."""

    #: Such as "NORMAL"
    type: str
    #: By their names; in the unit of the input, where they have one
    parameters: Mapping[str, float]
    #: "Mean value", "Standard deviation" and others that the type has
    moments: Mapping[str, float]


class Candidate(NamedTuple):
    """A model that competed for a response."""

    #: Such as "Linear Regression of order 2 with interactions"
    model: str
    #: The inputs that it uses
    inputs: Tuple[str, ...]
    #: Coefficients of prognosis and of determination
    cop: float
    cod: float
    #: Root mean square of the cross-validated residuals, in the unit of the response
    rmse: float
    #: Whether it is the response's model
    chosen: bool


class Residuals(NamedTuple):
    """A response at the N designs that its model was trained on, against what the model predicts
    there when it is trained without the design itself."""

    #: (N,) in the unit of the response, as are the predictions
    measured: Array
    predicted: Array
    #: (N,) numbers of the designs in the study, from 1; NaN where the project does not tell
    designs: Array

    @property
    def values(self) -> Array:
        """(N,) measured less predicted."""
        difference: Array = self.measured - self.predicted
        return difference

    @property
    def rmse(self) -> float:
        """Their root mean square, in the unit of the response; NaN without designs."""
        return float(np.sqrt(np.mean(self.values**2))) if len(self.measured) else float("nan")


def as_distributions(document: Any) -> Mapping[str, Distribution]:
    """Of the random inputs, by name; `document` describes a project."""
    return MappingProxyType({
        entry["name"]: Distribution(entry["distribution"]["type"],
                                    MappingProxyType(entry["distribution"]["parameters"]),
                                    MappingProxyType(entry["distribution"]["moments"]))
        for entry in document["inputs"] if "distribution" in entry})


def as_correlations(document: Any) -> Mapping[Tuple[str, str], float]:
    return MappingProxyType({(entry["inputs"][0], entry["inputs"][1]): entry["coefficient"]
                             for entry in document["correlations"]})


def as_candidates(entries: List[Dict[str, Any]]) -> Tuple[Candidate, ...]:
    return tuple(Candidate(_model(entry), tuple(entry["inputs"]), _number(entry["cop"]),
                           _number(entry["cod"]), _number(entry["rmse"]), entry["chosen"])
                 for entry in entries)


def as_residuals(result: Result) -> Mapping[str, Residuals]:
    return MappingProxyType({
        name: Residuals(*(result.arrays[f"{name}/{part}"].ravel()
                          for part in ("measured", "predicted", "designs")))
        for name in (entry["name"] for entry in result.document["responses"])})


def _model(entry: Dict[str, Any]) -> str:
    text = str(entry["family"])
    if entry["order"]:
        text += f" of order {entry['order']}"
    if entry["interactions"]:
        text += " with interactions"
    return text + (", ridge" if entry["ridge"] else "") + (", Box-Cox" if entry["box_cox"] else "")


def _number(value: Any) -> float:
    """NaN for the null of JSON."""
    return float("nan") if value is None else float(value)
