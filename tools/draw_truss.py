#!/usr/bin/env python3
"""Draws docs/images/truss.svg: the sample project beside the finite element analysis.

    tools/draw_truss.py build/release/cli/zel > docs/images/truss.svg

All predictions and errors come from the program zel, all exact values from the analysis below, which
is not the one that trained the project.
"""
import csv
import io
import math
import pathlib
import subprocess
import sys

PROJECT = pathlib.Path(__file__).resolve().parent.parent / "examples/zel_tenbar.vrdb"
INPUTS = [f"area_{i}" for i in range(1, 11)]
# The ten-bar truss of tools/sample_projects/ten_bar_truss.h: bays of 360 in, 10^4 ksi, 100 kips at nodes 1 and 3.
NODES = [(720, 360), (720, 0), (360, 360), (360, 0), (0, 360), (0, 0)]
BARS = [(4, 2), (2, 0), (5, 3), (3, 1), (2, 3), (0, 1), (4, 3), (5, 2), (2, 1), (3, 0)]
MODULUS, LOAD, LOADED = 1e4, 100.0, (1, 3)
MIDDLE = 15.0  # in^2, of the range of the areas


def solve_linear(matrix, right):
    """Gaussian elimination with pivots."""
    rows = [row + [value] for row, value in zip(matrix, right)]
    n = len(rows)
    for k in range(n):
        pivot = max(range(k, n), key=lambda i: abs(rows[i][k]))
        rows[k], rows[pivot] = rows[pivot], rows[k]
        for i in range(k + 1, n):
            factor = rows[i][k] / rows[k][k]
            rows[i] = [a - factor * b for a, b in zip(rows[i], rows[k])]
    x = [0.0] * n
    for k in reversed(range(n)):
        x[k] = (rows[k][n] - sum(rows[k][j] * x[j] for j in range(k + 1, n))) / rows[k][k]
    return x


def analyse(areas):
    """Displacement in in, and stresses in ksi."""
    stiffness = [[0.0] * 8 for _ in range(8)]
    axes = []
    for area, (a, b) in zip(areas, BARS):
        dx, dy = (NODES[b][i] - NODES[a][i] for i in (0, 1))
        length = math.hypot(dx, dy)
        parts = [(2 * a, -dx), (2 * a + 1, -dy), (2 * b, dx), (2 * b + 1, dy)]
        axis = {i: v / length for i, v in parts if i < 8}  # the last two nodes are supports
        axes.append((length, axis))
        for i, u in axis.items():
            for j, v in axis.items():
                stiffness[i][j] += MODULUS * area / length * u * v
    loads = [0.0] * 8
    for node in LOADED:
        loads[2 * node + 1] = -LOAD
    moved = solve_linear(stiffness, loads)
    stresses = [MODULUS / length * sum(v * moved[i] for i, v in axis.items())
                for length, axis in axes]
    return max(map(abs, moved)), stresses


def zel(*arguments, text=None):
    result = subprocess.run([sys.argv[1], *arguments], input=text, capture_output=True, text=True,
                            check=True)
    return [{name: float(cell) for name, cell in row.items()}
            for row in csv.DictReader(io.StringIO(result.stdout))]


def predict(designs):
    text = io.StringIO()
    csv.writer(text).writerows([INPUTS] + designs)
    return zel("solve", str(PROJECT), "--in", "-", "--errors", text=text.getvalue())


class Panel:
    """One pair of axes: numbers in, SVG out."""

    def __init__(self, left, title, x_range, y_range, x_label, y_label):
        self.left, self.top, self.width, self.height = left, 46, 330, 270
        self.x_range, self.y_range = x_range, y_range
        self.parts = [f'<text x="{left}" y="22" class="title">{title}</text>']
        right, bottom = left + self.width, self.top + self.height
        for value in self.ticks(x_range):
            x = self.x(value)
            self.parts.append(f'<line x1="{x}" y1="{self.top}" x2="{x}" y2="{bottom}" class="grid"/>'
                              f'<text x="{x}" y="{bottom + 17}" class="middle">{value:g}</text>')
        for value in self.ticks(y_range):
            y = self.y(value)
            self.parts.append(f'<line x1="{left}" y1="{y}" x2="{right}" y2="{y}" class="grid"/>'
                              f'<text x="{left - 7}" y="{y + 4}" class="end">{value:g}</text>')
        self.parts.append(
            f'<text x="{left + self.width / 2}" y="{bottom + 36}" class="middle">{x_label}</text>'
            f'<text transform="translate({left - 38} {self.top + self.height / 2}) rotate(-90)" '
            f'class="middle">{y_label}</text>')

    @staticmethod
    def ticks(limits):
        low, high = limits
        step = 10 ** math.floor(math.log10((high - low) / 3))
        step *= next(f for f in (1, 2, 5, 10) if (high - low) / (step * f) <= 6)
        return [step * i for i in range(math.ceil(low / step), math.floor(high / step) + 1)]

    def x(self, value):
        low, high = self.x_range
        return round(self.left + (value - low) / (high - low) * self.width, 1)

    def y(self, value):
        low, high = self.y_range
        return round(self.top + (high - value) / (high - low) * self.height, 1)

    def path(self, points, kind, close=False):
        text = "M" + "L".join(f"{self.x(x)} {self.y(y)}" for x, y in points) + "Z" * close
        self.parts.append(f'<path d="{text}" class="{kind}"/>')

    def dots(self, points, radius):
        # Lines of no length with round ends: the shortest way to write many dots.
        text = "".join(f"M{self.x(x)} {self.y(y)}h0" for x, y in points)
        self.parts.append(f'<path d="{text}" class="dots" stroke-width="{2 * radius}"/>')

    def note(self, x, y, text):
        self.parts.append(f'<text x="{self.x(x)}" y="{self.y(y)}">{text}</text>')


def draw_cut():
    """The displacement along one input, all others in the middle of their range."""
    steps = [6 + 18 * i / 60 for i in range(61)]
    rows = predict([[x] + [MIDDLE] * 9 for x in steps])
    values = [row["displacement"] for row in rows]
    sigmas = [2 * row["displacement:rmse"] for row in rows]
    exact = [(x, analyse([x] + [MIDDLE] * 9)[0]) for x in steps[::6]]
    panel = Panel(62, "Prediction along one input", (5, 25), (2, 4.5), "area_1 / in²",
                  "displacement / in")
    panel.path([(x, v + s) for x, v, s in zip(steps, values, sigmas)] +
               [(x, v - s) for x, v, s in reversed(list(zip(steps, values, sigmas)))], "band", True)
    panel.path(list(zip(steps, values)), "line")
    panel.dots(exact, 3.2)
    panel.path([(13.0, 4.25), (14.2, 4.25)], "line")
    panel.note(14.6, 4.21, "predicted")
    panel.path([(13.0, 4.01), (14.2, 4.01), (14.2, 4.13), (13.0, 4.13)], "band", True)
    panel.note(14.6, 4.02, "± twice the local RMSE")
    panel.dots([(13.6, 3.88)], 3.2)
    panel.note(14.6, 3.84, "finite element analysis")
    return panel


def draw_scatter():
    """Predicted against exact stresses at fresh designs."""
    designs = [[row[name] for name in INPUTS]
               for row in zel("sample", "--scheme", "sobol", "--n", "40", "--inputs",
                              ",".join(f"{name}:6.5:23.5" for name in INPUTS))]
    exact = [analyse(design) for design in designs]
    rows = predict(designs)
    points = [(stresses[i], row[f"stress[{i}]"]) for (_, stresses), row in zip(exact, rows)
              for i in range(10)]
    panel = Panel(462, "400 stresses at fresh designs", (-30, 30), (-30, 30), "analysis / ksi",
                  "predicted / ksi")
    panel.path([(-30, -30), (30, 30)], "thin")
    panel.dots(points, 2.2)
    return panel


STYLE = """
  text { font: 13px system-ui, "DejaVu Sans", sans-serif; fill: #333 }
  .title { font-size: 15px; font-weight: 600 } .middle { text-anchor: middle }
  .end { text-anchor: end } .grid { stroke: #e4e4e4 } .line { fill: none; stroke: #1f66b0; stroke-width: 2 }
  .thin { fill: none; stroke: #999 } .band { fill: #1f66b0; fill-opacity: .18 }
  .dots { stroke: #d1495b; stroke-linecap: round }"""


def main():
    panels = [draw_cut(), draw_scatter()]
    print('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 820 366" width="820" height="366">'
          f"<style>{STYLE}</style>"
          '<rect width="820" height="366" fill="#fff"/>')
    for panel in panels:
        print("\n".join(panel.parts))
    print("</svg>")


if __name__ == "__main__":
    main()
