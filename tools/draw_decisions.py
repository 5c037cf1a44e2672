#!/usr/bin/env python3
"""Draws the pictures of docs/decide.md: what matters, what scatters, and the Pareto front.

    tools/draw_decisions.py build/release/cli/zel truss.vrdb docs/images

truss.vrdb is the project that the page trains first. Wants matplotlib.
"""
import csv
import io
import pathlib
import subprocess
import sys

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "zel", "font.size": 9,
                            "axes.spines.top": False, "axes.spines.right": False})
from matplotlib import pyplot  # noqa: E402

ZEL, PROJECT, FOLDER = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
RANDOM = pathlib.Path(__file__).resolve().parent.parent / "examples/zel_tenbar_random.vrdb"
LIMIT = 5.5


def zel(*arguments, table=""):
    """The rows of the table that a command prints."""
    result = subprocess.run([ZEL, *map(str, arguments)], input=table, capture_output=True, text=True,
                            check=True)
    return list(csv.DictReader(io.StringIO(result.stdout)))


def save(figure, name):
    figure.tight_layout()
    figure.savefig(FOLDER / f"decide_{name}.svg", metadata={"Date": None})


def draw_indices():
    rows = [row for row in zel("sensitivity", PROJECT, "--csv", "-", "--quiet")
            if row["quantity"] == "displacement"]
    inputs = sorted({row["input"] for row in rows}, key=lambda name: int(name.split("_")[1]))
    figure, ax = pyplot.subplots(figsize=(6.0, 2.6))
    for shift, order in ((-0.2, "first"), (0.2, "total")):
        found = {row["input"]: row for row in rows if row["order"] == order}
        values = [float(found[name]["value"]) for name in inputs]
        ends = [[abs(float(found[name][end]) - value) for name, value in zip(inputs, values)]
                for end in ("low", "high")]
        ax.bar([i + shift for i in range(len(inputs))], values, 0.4, yerr=ends, capsize=2,
               label=order, color="C0" if order == "first" else "C1", ecolor="0.3")
    ax.set_xticks(range(len(inputs)), inputs)
    ax.set_ylabel("share of the variance")
    ax.legend(frameon=False)
    save(figure, "indices")


def draw_scatter():
    sample = subprocess.run([ZEL, "sample", "--scheme", "latin-hypercube-sampling", "--n", "10000", "--from",
                             RANDOM], capture_output=True, text=True, check=True).stdout
    values = [float(row["displacement"])
              for row in zel("solve", RANDOM, "--in", "-", "--extrapolate", table=sample)]
    figure, ax = pyplot.subplots(figsize=(6.0, 2.6))
    ax.hist(values, 80, color="C0")
    ax.axvline(LIMIT, color="C3")
    ax.annotate("limit", (LIMIT, ax.get_ylim()[1]), (4, 0), textcoords="offset points", color="C3",
                va="top")
    ax.set(xlabel="displacement in in", ylabel="designs of 10000")
    save(figure, "scatter")


def draw_front():
    front = zel("optimize", PROJECT, "--minimize", "mass", "--minimize", "displacement",
                "--no-project-limits", "--csv", "-", "--quiet")
    designs = zel("solve", PROJECT, "--in", "-",
                  table=subprocess.run([ZEL, "sample", "--scheme", "latin-hypercube-sampling", "--n", "200",
                                        "--from", PROJECT], capture_output=True, text=True,
                                       check=True).stdout)
    figure, ax = pyplot.subplots(figsize=(6.0, 3.2))
    for rows, style in ((designs, {"color": "0.75", "markersize": 2, "label": "designs by chance"}),
                        (front, {"color": "C0", "markersize": 4, "label": "Pareto front"})):
        ax.plot([float(row["mass"]) for row in rows], [float(row["displacement"]) for row in rows],
                "o", **style)
    ax.axhline(2.0, color="C3", linewidth=1)
    ax.annotate("limit", (ax.get_xlim()[1], 2.0), (0, 3), textcoords="offset points", color="C3",
                ha="right", va="bottom")
    ax.set(xlabel="mass in lb", ylabel="displacement in in")
    ax.legend(frameon=False)
    save(figure, "front")


for draw in (draw_indices, draw_scatter, draw_front):
    draw()
