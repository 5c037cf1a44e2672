"""Projects and solutions as notebooks show them. Every text that is not ours is escaped."""

from __future__ import annotations

import html
import math
from typing import TYPE_CHECKING, Iterable, List, Sequence

if TYPE_CHECKING:
    from .project import Project
    from .results import Solution

#: Rows of a solution that are shown, names of a project likewise.
_MAX_ROWS = 10
_MAX_NAMES = 50


def _cell(value: object) -> str:
    if isinstance(value, float):
        return f"<td>{value:.6g}</td>" if math.isfinite(value) else "<td></td>"
    return f"<td style='text-align:left'>{html.escape(str(value))}</td>"


def _table(caption: str, columns: Sequence[str], rows: Iterable[Sequence[object]]) -> str:
    head = "".join(f"<th>{html.escape(name)}</th>" for name in columns)
    body = "".join("<tr>" + "".join(map(_cell, row)) + "</tr>" for row in rows)
    return (f"<table><caption>{html.escape(caption)}</caption><thead><tr>{head}</tr></thead>"
            f"<tbody>{body}</tbody></table>")


def _more(shown: int, total: int) -> str:
    return f"<p>{total - shown} more</p>" if total > shown else ""


def project_page(project: "Project") -> str:
    """Its inputs with their ranges, and its responses with the quality of their models."""
    if project.closed:
        return f"<pre>{html.escape(repr(project))}</pre>"
    inputs = [(name, *project.bounds[name], project.reference[name])
              for name in project.inputs[:_MAX_NAMES]]
    responses = [(name, project.cop(name), ", ".join(project.used_inputs(name)))
                 for name in project.responses[:_MAX_NAMES]]
    page = _table("Inputs", ("name", "lower", "upper", "reference"), inputs)
    page += _more(len(inputs), len(project.inputs))
    page += _table("Responses", ("name", "CoP", "inputs that the model uses"), responses)
    page += _more(len(responses), len(project.responses))
    if project.criteria:
        page += f"<p>Criteria: {html.escape(', '.join(project.criteria))}</p>"
    return page


def solution_page(solution: "Solution") -> str:
    """The first designs, a row each."""
    names = list(solution)[:_MAX_NAMES]
    n = len(solution.responses.array)
    index = range(n) if solution.index is None else list(solution.index[:_MAX_ROWS])
    rows: List[Sequence[object]] = [
        (index[i], *(float(solution[name][i]) for name in names)) for i in range(min(n, _MAX_ROWS))]
    return _table(f"{n} designs", ["", *names], rows) + _more(len(rows), n)
