"""The training as an estimator of scikit-learn."""

from __future__ import annotations

from typing import Any, List, Optional, Sequence, Tuple, Union

import numpy as np
from sklearn.base import BaseEstimator, MultiOutputMixin, RegressorMixin
from sklearn.utils.validation import check_is_fitted

from .project import Project
from .results import Array
from .training import train


class Regressor(MultiOutputMixin, RegressorMixin, BaseEstimator):  # type: ignore[misc]
    """Trains a model for each target, see train(), and predicts with it.

    discrete: names of inputs that take the values of the training and no others
    seed, budget: of the training

    After fit(): `project_`, the trained Project, with which all else can be asked; `n_features_in_`
    and, after a DataFrame, `feature_names_in_`. Inputs without names are "x0", "x1", ...; targets
    have the names of y or are "y0", "y1", ... Predictions extrapolate where they must.
    """

    def __init__(self, discrete: Sequence[str] = (), seed: int = 1, budget: float = 60.0) -> None:
        self.discrete = discrete
        self.seed = seed
        self.budget = budget

    def fit(self, X: Any, y: Any) -> "Regressor":
        """Trains on n x m inputs and n or n x r targets. Raises ValueError."""
        X, values = self._validate_data(X, y, multi_output=True, y_numeric=True, dtype=np.float64,
                                        ensure_min_samples=2)
        self._is_vector = values.ndim == 1
        inputs = list(getattr(self, "feature_names_in_", _numbered("x", X.shape[1])))
        responses = _target_names(y, 1 if self._is_vector else values.shape[1], inputs)
        self.project_: Project = train((X, values), inputs, responses, discrete=self.discrete,
                                       seed=self.seed, budget=self.budget, progress=False)
        # The training drops constant inputs.
        self._used = [inputs.index(name) for name in self.project_.inputs]
        return self

    def predict(self, X: Any, return_std: bool = False) -> Union[Array, Tuple[Array, Array]]:
        """The targets at n designs, (n,) or (n, r) as y was in fit().

        return_std: add the local root mean square error of the cross-validation, in the shape of
            the targets
        """
        check_is_fitted(self)
        designs = self._as_fitted(X)
        if designs is None:
            designs = self._validate_data(X, reset=False, dtype=np.float64)
        if len(self._used) < self.n_features_in_:
            designs = designs[:, self._used]
        values = self._shaped(self.project_.predict(designs, extrapolate=True).array)
        if not return_std:
            return values
        errors = self.project_.errors(designs, extrapolate=True)
        return values, self._shaped(np.column_stack([errors[name].rmse
                                                     for name in self.project_.responses]))

    def _as_fitted(self, X: Any) -> Optional[Array]:
        """The numbers of a DataFrame just like that of fit(), which needs no further look; None for
        anything else: scikit-learn looks at it for longer than the models take to predict."""
        names = getattr(self, "feature_names_in_", None)
        if names is None or not hasattr(X, "columns") or list(X.columns) != list(names):
            return None
        array = np.asarray(X)
        return array if array.dtype == np.float64 and len(array) and np.isfinite(
            array).all() else None

    def _shaped(self, values: Array) -> Array:
        return values[:, 0] if self._is_vector else values


def _numbered(letter: str, n: int) -> List[str]:
    return [f"{letter}{i}" for i in range(n)]


def _target_names(y: Any, n: int, inputs: Sequence[str]) -> List[str]:
    """Those of a DataFrame or Series, if they are texts and no input has them."""
    named: List[Any] = list(y.columns) if hasattr(y, "columns") else [getattr(y, "name", None)]
    if len(named) != n or not all(isinstance(name, str) for name in named):
        named = ["y"] if n == 1 else _numbered("y", n)
    taken = set(inputs)
    return [next(name for name in (base + "_" * i for i in range(len(taken) + 1))
                 if name not in taken) for base in named]
