"""Pictures of a project, with matplotlib."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Dict, List, Mapping, Optional, Sequence, Tuple

import numpy as np
from matplotlib.axes import Axes
from matplotlib.figure import Figure

from .errors import InputError, ModelError, unknown_name
from .results import Array

if TYPE_CHECKING:
    from .findings import Residuals
    from .project import Project

#: Half the width of bands, in root mean square errors: 95 % of normal errors lie within.
_BAND = 1.96

_BAND_STYLE = {"alpha": 0.2, "linewidth": 0}


class Plots:
    """The pictures of a project: `project.plot.predicted("mass")`.

    Each takes the Axes to draw on, `ax`, or makes some (those of pyplot, where it is in use), and
    returns them. Responses and inputs are named as everywhere. Raises UnknownNameError.
    """

    def __init__(self, project: "Project") -> None:
        self._project = project

    def predicted(self, response: str, ax: Optional[Axes] = None) -> Axes:
        """Predicted against measured values, cross-validated, and the line on which they are equal
        with a band of 1.96 root mean square errors, which holds 95 % of normal errors."""
        residuals = self._residuals(response)
        ax = _axes(ax)
        ends = _ends(np.concatenate([residuals.measured, residuals.predicted]))
        band = _BAND * residuals.rmse
        ax.plot(ends, ends, color="0.4", linewidth=1)
        ax.fill_between(ends, ends - band, ends + band, color="C0", **_BAND_STYLE)
        ax.plot(residuals.measured, residuals.predicted, "o", markersize=4)
        ax.set(xlabel=f"{_plain(response)}, measured", ylabel=f"{_plain(response)}, predicted",
               title=f"CoP {self._project.cop(response):.3f}")
        return ax

    def residuals(self, response: str, ax: Optional[Axes] = None) -> Axes:
        """Measured less predicted values over the predicted ones, cross-validated, with the band
        of predicted()."""
        residuals = self._residuals(response)
        ax = _axes(ax)
        band = _BAND * residuals.rmse
        ax.axhline(0, color="0.4", linewidth=1)
        ax.axhspan(-band, band, color="C0", **_BAND_STYLE)
        ax.plot(residuals.predicted, residuals.values, "o", markersize=4)
        ax.set(xlabel=f"{_plain(response)}, predicted", ylabel="measured less predicted")
        return ax

    def cops(self, ax: Optional[Axes] = None) -> Axes:
        """The matrix of coefficients of prognosis: a row for each response, a column for each input
        with its single CoP, and the CoP of the whole model behind them."""
        project = self._project
        values = np.array([[*project.single_cops(name).values(), project.cop(name)]
                           for name in project.responses])
        rows, columns = values.shape
        ax = _axes(ax, (1.5 + 0.7 * columns, 1.0 + 0.4 * rows))
        ax.imshow(values, vmin=0, vmax=1, cmap="Blues", aspect="auto")
        ax.set_xticks(range(columns), [*map(_plain, project.inputs), "all"], rotation=45,
                      ha="right")
        ax.set_yticks(range(rows), list(map(_plain, project.responses)))
        for (row, column), value in np.ndenumerate(values):
            if np.isfinite(value):
                ax.text(column, row, f"{value:.2f}", ha="center", va="center", fontsize=8,
                        color="white" if value > 0.6 else "black")
        ax.set_title("CoP")
        return ax

    def slice(self, response: str, input: str, at: Optional[Mapping[str, float]] = None,
              n: int = 201, ax: Optional[Axes] = None) -> Axes:
        """A response or criterion along an input, n points from bound to bound. A response has a
        band of 1.96 of its local root mean square errors, where its model knows them.

        at: values of the other inputs, which else have their reference values
        """
        x = self._range(input, n)
        designs = {**self._place(at), input: x}
        values = self._values(response, designs)
        ax = _axes(ax)
        line, = ax.plot(x, values, label=_plain(response))
        try:
            if response in self._project.responses:
                band = _BAND * self._project.errors(designs, response, extrapolate=True).rmse
                ax.fill_between(x, values - band, values + band, color=line.get_color(),
                                **_BAND_STYLE)
        except ModelError:  # a model without errors has no band
            pass
        ax.set(xlabel=self._label(input), ylabel=_plain(response))
        return ax

    def map(self, response: str, x: str, y: str, at: Optional[Mapping[str, float]] = None,
            n: int = 61, ax: Optional[Axes] = None) -> Axes:
        """A response or criterion over two inputs, n x n points from bound to bound.

        at: values of the other inputs, which else have their reference values
        """
        if x == y:
            raise InputError(f'a map needs two inputs, not "{x}" twice')
        grid_x, grid_y = np.meshgrid(self._range(x, n), self._range(y, n))
        values = self._values(response, {**self._place(at), x: grid_x.ravel(), y: grid_y.ravel()})
        ax = _axes(ax)
        filled = ax.contourf(grid_x, grid_y, values.reshape(n, n), 15)
        ax.figure.colorbar(filled, ax=ax, label=_plain(response))
        ax.set(xlabel=self._label(x), ylabel=self._label(y))
        return ax

    def parallel(self, X: Any = None, color: Optional[str] = None,
                 names: Optional[Sequence[str]] = None, ax: Optional[Axes] = None) -> Axes:
        """Parallel coordinates: an axis for each name, a line for each design, each axis from the
        smallest of its values to the largest.

        X: designs; 200 of sample() by default
        color: response or criterion that colours the lines; the first response by default
        names: of inputs, responses and criteria; all inputs and responses by default
        """
        project = self._project
        designs = project._designs(project.sample(200).array if X is None else X)
        solution = project.solve(designs, extrapolate=True)
        known: Dict[str, Array] = {**solution, **dict(zip(project.inputs, designs.T))}
        names = [*project.inputs, *project.responses] if names is None else list(names)
        color = project.responses[0] if color is None else color
        for name in [*names, color]:
            if name not in known:
                raise unknown_name("input, response or criterion", name, tuple(known))
        ax = _axes(ax, (1.5 + 0.9 * len(names), 4.0))
        _draw_parallel(ax, [known[name] for name in names], solution[color], color)
        ax.set_xticks(range(len(names)), list(map(_plain, names)), rotation=45, ha="right")
        ax.set_yticks([])
        return ax

    def _residuals(self, response: str) -> "Residuals":
        name = self._project._known(response)
        residuals = self._project.residuals()[name]
        if not len(residuals.measured):
            raise ModelError(f'the model of "{response}" knows no cross-validated predictions')
        return residuals

    def _range(self, input: str, n: int) -> Array:
        if input not in self._project.bounds:
            raise unknown_name("input", input, self._project.inputs)
        lower, upper = self._project.bounds[input]
        if not np.isfinite(upper - lower):
            raise InputError(f'the input "{input}" has no bounds')
        return np.linspace(lower, upper, n)

    def _place(self, at: Optional[Mapping[str, float]]) -> Dict[str, Any]:
        """Reference values, middles of bounds where there are none, and what the caller says."""
        project = self._project
        place = {name: value if np.isfinite(value) else float(np.mean(project.bounds[name]))
                 for name, value in project.reference.items()}
        for name in at or {}:
            if name not in place:
                raise unknown_name("input", name, project.inputs)
        return {**place, **(at or {})}

    def _values(self, name: str, designs: Any) -> Array:
        project = self._project
        return project.solve(designs, criteria=name not in project.responses,
                             extrapolate=True)[name]

    def _label(self, input: str) -> str:
        unit = self._project.units.get(input)
        return _plain(input) + (f" [{_plain(unit)}]" if unit else "")


def _plain(text: str) -> str:
    """For matplotlib, to which dollars begin formulas."""
    return text.replace("$", r"\$")


def _axes(ax: Optional[Axes], size: Tuple[float, float] = (5.0, 4.0)) -> Axes:
    if ax is not None:
        return ax
    from matplotlib import pyplot

    figure: Figure = pyplot.figure(figsize=size, layout="constrained")
    return figure.add_subplot()


def _ends(values: Array) -> Array:
    lower, upper = float(values.min()), float(values.max())
    margin = 0.05 * (upper - lower) or 1.0
    return np.array([lower - margin, upper + margin])


def _draw_parallel(ax: Axes, columns: List[Array], color: Array, label: str) -> None:
    from matplotlib.collections import LineCollection

    heights = []
    for values in columns:
        lower, upper = np.nanmin(values), np.nanmax(values)
        heights.append((values - lower) / ((upper - lower) or 1.0))
    position = np.arange(len(columns))
    lines = LineCollection([np.column_stack([position, row]) for row in np.array(heights).T],
                           array=color, alpha=0.5, linewidth=0.8)
    ax.add_collection(lines)
    ax.figure.colorbar(lines, ax=ax, label=_plain(label))
    for i, values in enumerate(columns):
        ax.axvline(i, color="0.6", linewidth=0.8)
        for height, end in ((0.0, np.nanmin(values)), (1.0, np.nanmax(values))):
            ax.text(i, height + (0.02 if height else -0.02), f"{end:.4g}", fontsize=7, ha="center",
                    va="bottom" if height else "top")
    ax.set(xlim=(-0.3, len(columns) - 0.7), ylim=(-0.1, 1.1))
