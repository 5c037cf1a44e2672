#!/usr/bin/env python3
"""Random projects, trained and exported: the C file (by tcc), the Python module and the page's script
(in node) must predict as the library does, at designs inside, outside, and that are no numbers.

Runs as   compare_exports.py ZEL EVALUATE_JS [ROUNDS [SEED]]   and ends with 1 at the first difference,
whose table and project stay in the directory that it names. Needs numpy, tcc and node.
"""
import csv
import ctypes
import importlib.util
import io
import json
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

import numpy as np

ZEL, EVALUATE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
NUM_INSIDE, NUM_DESIGNS = 30, 48
NAMES = ["x", "class", "I", "NAN", "linux", "unix", "2nd", "exp", "pow", "x_2", "x 2", "x-2", "Größe", "*/",
         "/*", "??/", "\\", "\"", "'", "%s", "</script>", "<!--", "_", "__import__", "def", "None",
         "points_0", "predict", "names", "a" * 60, "a" * 61, "\u202e", "日本", "λ", "double", "main", "int"]
SCRIPT = """
const {makeStudy} = require(process.argv[1]);
const {model, x, y} = JSON.parse(require('fs').readFileSync(0, 'utf8'));
const study = makeStudy(model);
const rows = x.map((row, i) => { const at = row.map(Number);
  return [study.predict(at), study.criteria(at, y[i].map(Number))].map((v) => v.map(String)); });
process.stdout.write(JSON.stringify(rows));
"""


def run(*arguments, **options):
    return subprocess.run([str(a) for a in arguments], capture_output=True, timeout=600, **options)


def random_response(rng, x):
    """A smooth, rough, constant or steep function of some of the inputs, in any units."""
    u = (x - x.mean(axis=0)) / (x.std(axis=0) + 1e-300)
    a, b = u[:, rng.randrange(u.shape[1])], u[:, rng.randrange(u.shape[1])]
    y = rng.choice([
        lambda: a + b, lambda: a * b + a**2, lambda: np.sin(2 * a) + 0.1 * b, lambda: np.exp(a + b),
        lambda: np.exp(4 * a), lambda: 1 / (1 + a**2 + b**2), lambda: np.full(len(a), 3.0),
        lambda: np.floor(2 * a), lambda: np.abs(a) + np.random.default_rng(rng.randrange(99)).normal(size=len(a)),
        lambda: np.where(a > 0, b, -b)])()
    return (y + rng.choice([0, 0, 10, -1e3])) * 10.0**rng.randrange(-9, 9)


def random_text(rng, names, depth, safe):
    """Arithmetic of scalars; `safe` texts do not leave the real numbers."""
    if depth == 0 or rng.random() < 0.2:
        return rng.choice(names) if rng.random() < 0.7 else rng.choice(["2", "0.5", "pi", "1e-3", "7"])
    part = lambda: random_text(rng, names, depth - 1, safe)
    kind = rng.randrange(8)
    if kind < 3:
        return f"{part()}{rng.choice('+-*')}{part()}"
    if kind == 3:
        return f"({part()})/({part()}{rng.choice(['', '^2+1'])})" if not safe else f"({part()})/3"
    if kind == 4:
        return f"({part()})^{rng.choice(['2', '3', '2^2'] if safe else ['2', '-1', '0.5', '2^3', '(-2)'])}"
    if kind == 5:
        return f"-({part()})" if rng.random() < 0.5 else f"({part()}-{part()}-{part()})"
    if kind == 6:
        return f"{rng.choice(['min', 'max'])}({part()},{part()})"
    names_of = ["abs", "sin", "cos", "atan", "tanh", "floor", "ceil"]
    return f"{rng.choice(names_of if safe else names_of + ['sqrt', 'exp', 'ln', 'log', 'tan', 'asin', 'acos', 'sinh', 'cosh'])}({part()})"


class Round:
    def __init__(self, folder, seed):
        self.folder, self.seed = folder, seed
        rng = self.rng = random.Random(seed)
        draw = np.random.default_rng(seed)
        m, n = rng.randrange(1, 5), rng.randrange(12, 160)
        x = draw.random((n, m))
        if rng.random() < 0.3:
            x[:, 0] = np.floor(4 * x[:, 0])
        x = (x + rng.choice([0, 0, -0.5, 1e3])) * 10.0**rng.randrange(-6, 7)
        columns = rng.sample(NAMES, m + rng.randrange(1, 4))
        self.inputs, outputs = columns[:m], columns[m:]
        y = np.column_stack([random_response(rng, x) for _ in outputs])
        with open(folder / "table.csv", "w", newline="") as file:
            writer = csv.writer(file)
            writer.writerow(columns)
            writer.writerows([[repr(float(v)) for v in row] for row in np.hstack([x, y])])
        usable = [name for name in columns if name.isidentifier() and name not in ("I", "exp")] or ["1"]
        self.safe = rng.random() < 0.5
        criteria = []
        for name in rng.sample(["goal", "names", "while", "c_1", "C_1", "lambda", "isnan"], 3):
            text = random_text(rng, usable, 3, self.safe)
            criteria += ["--criterion", name + ": " + text + rng.choice(["", " <= 1", " >= -2"])]
            if name.isidentifier() and name not in ("names",):
                usable = usable + [name] if rng.random() < 0.5 else usable
        quoted = lambda names: ",".join('"' + n.replace('"', '""') + '"' for n in names)
        self.command = ["train", folder / "table.csv", "--inputs", quoted(self.inputs), "--responses",
                        quoted(outputs), "--budget", rng.choice(["1", "2"]), "--quiet", *criteria,
                        "-o", folder / "study.vrdb"]
        inside = x.min(axis=0) + draw.random((NUM_DESIGNS, m)) * np.ptp(x, axis=0)
        self.x = np.array(inside)
        self.x[0] = x[0]  # a support point
        for i in range(NUM_INSIDE, NUM_DESIGNS):
            self.x[i] += draw.normal(size=m) * np.ptp(x, axis=0) * 10.0**rng.randrange(-1, 3)
        for i, odd in enumerate([np.nan, np.inf, -np.inf, 1e300, -1e300, 1e-300, 0.0]):
            self.x[NUM_INSIDE + i, rng.randrange(m)] = odd

    def train(self):
        result = run(ZEL, *self.command)
        assert result.returncode in (0, 1), result
        self.refusal = result.stderr.decode()
        return result.returncode == 0

    def export(self):
        self.model = json.loads(self.must("export", self.folder / "study.vrdb", "--quiet"))
        for ending, form in (("c", "c"), ("py", "python")):
            self.must("export", self.folder / "study.vrdb", "--quiet", "--format", form, "-o",
                      self.folder / ("study." + ending))

    @staticmethod
    def must(*arguments, **options):
        result = run(ZEL, *arguments, **options)
        assert result.returncode == 0, (arguments, result.stderr.decode())
        return result.stdout

    def library(self):
        text = io.StringIO(newline="")
        csv.writer(text).writerows([[i["name"] for i in self.model["inputs"]],
                                    *([repr(float(v)) for v in row] for row in self.x)])
        answer = self.must("solve", self.folder / "study.vrdb", "--in", "-", "--extrapolate", "--quiet",
                           "--criteria", input=text.getvalue().encode())
        rows = list(csv.reader(io.StringIO(answer.decode(), newline="")))
        columns, names = np.array(rows[1:], dtype=float).T, rows[0]
        responses = [columns[names.index(r["name"])] for r in self.model["responses"]]
        behind = len(responses)  # criteria may be named as responses are
        return responses + [columns[behind + names[behind:].index(c["name"])]
                            for c in self.model["criteria"]]

    def c(self, y_library):
        library = self.folder / f"study{self.seed}.so"
        built = run("tcc", "-std=c99", "-Wall", "-Werror", "-shared", self.folder / "study.c", "-o",
                    library, "-lm")
        assert built.returncode == 0 and not built.stderr, built.stderr
        code = ctypes.CDLL(str(library))
        r, c = len(self.model["responses"]), len(self.model["criteria"])
        rows = []
        for x, right in zip(self.x, y_library):
            at, y, z = (ctypes.c_double * len(x))(*x), (ctypes.c_double * r)(), (ctypes.c_double * max(c, 1))()
            code.study_predict(at, y)
            if c:
                code.study_criteria(at, (ctypes.c_double * r)(*right), z)
            rows.append(list(y) + list(z)[:c])
        return np.array(rows).T

    def python(self, y_library):
        found = importlib.util.spec_from_file_location(f"study{self.seed}", self.folder / "study.py")
        module = importlib.util.module_from_spec(found)
        found.loader.exec_module(module)
        values = module.predict(self.x)
        return np.hstack([values] + ([module.criteria(self.x, y_library)] if self.model["criteria"] else [])).T

    def page(self, y_library):
        texts = lambda rows: [[repr(float(v)).replace("inf", "Infinity").replace("nan", "NaN")
                               for v in row] for row in rows]
        text = json.dumps({"model": self.model, "x": texts(self.x), "y": texts(y_library)})
        result = run("node", "-e", SCRIPT, EVALUATE, input=text.encode())
        assert result.returncode == 0, result.stderr.decode()
        return np.array([[float(v) for v in y + z] for y, z in json.loads(result.stdout)]).T

    def finite(self, expected, i):
        """Whether a design and its responses are numbers, and small enough to compute with."""
        responses = [values[i] for values in expected[:len(self.model["responses"])]]
        return (np.abs([*self.x[i], *responses]) < 1e100).all()

    def compare(self, what, values, expected):
        for k, (value, right) in enumerate(zip(values, expected)):
            is_response = k < len(self.model["responses"])
            entry = (self.model["responses"] if is_response
                     else self.model["criteria"])[k - (0 if is_response else len(self.model["responses"]))]
            numbers = right[:NUM_INSIDE][np.isfinite(right[:NUM_INSIDE])]
            spread = max(np.ptp(numbers), 1e-3 * np.abs(numbers).max()) if len(numbers) else 0.0
            family = entry["model"]["family"] if is_response else entry["text"]
            # Sums of kriging and local fits are equal to the bit, unless a power of another library
            # follows. Criteria read the library's responses.
            share = 0.0 if family in ("kriging", "moving least squares") else 1e-12
            if share == 0.0 and any(step.get("k", 1) != 1 for step in entry["model"]["back"]):
                share = 1e-12
            for i, (a, b) in enumerate(zip(value, right)):
                if a == b or (np.isnan(a) and np.isnan(b)):
                    continue
                # Exports leave off where the library goes on with complex numbers, as from infinity
                # times a number; steps magnify rounding.
                if not is_response and ((np.isnan(a) or np.isnan(b)) and not self.safe or not self.finite(expected, i) or
                                        "floor" in entry["text"] or "ceil" in entry["text"]):
                    continue
                # 1 - cos(x) magnifies the last digit of another library's cosine.
                difference = abs(a - b) - (0.0 if is_response else 1e-15)
                if i >= NUM_INSIDE and share > 0.0 and difference <= (1e-9 if is_response else 1e-6) * max(abs(a), abs(b), spread):
                    continue
                if i < NUM_INSIDE and difference <= share * spread:
                    continue
                yield (f"{what}: {entry['name']!r} ({family}) at {self.x[i].tolist()}: {a!r}, the library "
                       f"{b!r}, difference / range {abs(a - b) / spread if spread else 0:.2g}")


def main():
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 100
    first = int(sys.argv[4]) if len(sys.argv) > 4 else 1
    families, refused, criteria = {}, 0, 0
    for seed in range(first, first + rounds):
        folder = pathlib.Path(tempfile.mkdtemp(prefix=f"exports-{seed}-"))
        one = Round(folder, seed)
        if one.train():
            one.export()
            expected = one.library()
            y = np.array(expected[:len(one.model["responses"])]).T
            found = [line for what in (one.c, one.python, one.page)
                     for line in one.compare(what.__name__, what(y), expected)]
            if found:
                print(f"seed {seed}, {folder}:", *found[:10], sep="\n  ")
                sys.exit(1)
            criteria += len(one.model["criteria"])
            for response in one.model["responses"]:
                family = response["model"]["family"]
                families[family] = families.get(family, 0) + 1
        else:
            refused += 1
        shutil.rmtree(folder)
    print(f"{rounds} projects, {refused} refused; {criteria} criteria; {families}")


if __name__ == "__main__":
    main()
