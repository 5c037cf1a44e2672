#!/usr/bin/env python3
"""Is the CoP that `zel train` tells the CoP that one gets, and is its choice a good one?

For each table (inputs first, the response last; see export_tables.R) and each of several random
splits into five outer folds: the whole of `zel train` on four fifths, its models judged on the
fifth.

    told  the mean CoP of the trained projects
    got   1 - SSE / SST over all designs and splits, each design predicted without its fold; SST
          about the mean of all responses, so that this is also the mean over the splits

On a table of 20 rows the got of one split differs by 0.1 and more from that of the next. So figures
of tables are means over the splits, those of the peers too, and thresholds are held against these.

Beside it five peers of scikit-learn on the same folds: ridge regression, ridge regression on all
monomials up to order 2, a Gaussian process with a length for each input, boosted trees and a
random forest. Their results do not change and are kept in peers.json of the folder of results.

A report, not a test: it prints a table and a summary in Markdown.
"""

import argparse
import concurrent.futures
import csv
import fnmatch
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time
import warnings

os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")  # before NumPy: folds run side by side instead

import numpy as np  # noqa: E402
from sklearn import datasets  # noqa: E402
from sklearn.ensemble import GradientBoostingRegressor, RandomForestRegressor  # noqa: E402
from sklearn.gaussian_process import GaussianProcessRegressor  # noqa: E402
from sklearn.gaussian_process.kernels import RBF, ConstantKernel, WhiteKernel  # noqa: E402
from sklearn.linear_model import RidgeCV  # noqa: E402
from sklearn.pipeline import make_pipeline  # noqa: E402
from sklearn.preprocessing import PolynomialFeatures, StandardScaler  # noqa: E402

FOLDS = 5
PEERS = ("ridge", "quadratic", "process", "boosting", "forest")
# Beyond this size of a training set a Gaussian process takes minutes for each fold: it gets a
# random subset.
MOST_PROCESS_ROWS = 1000
# From here on the search for the lengths of the process starts once, not twice.
MANY_PROCESS_ROWS = 400


def export_sklearn_tables(folder):
    """Writes the tables that come with scikit-learn, where they are not there yet."""
    diabetes = datasets.load_diabetes(scaled=False)
    linnerud = datasets.load_linnerud()
    tables = {"diabetes": (diabetes.feature_names, diabetes.data, "progression", diabetes.target)}
    for k, name in enumerate(linnerud.target_names):
        tables["linnerud_" + name.lower()] = (
            linnerud.feature_names, linnerud.data, name, linnerud.target[:, k])
    for name, (inputs, x, response, y) in tables.items():
        path = folder / (name + ".csv")
        if not path.exists():
            write_csv(path, [*inputs, response], np.column_stack([x, y]))


def write_csv(path, header, rows):
    with open(path, "w", newline="") as stream:
        writer = csv.writer(stream, lineterminator="\n")
        writer.writerow(header)
        writer.writerows([repr(float(value)) for value in row] for row in rows)


def read_csv(path):
    """The header and the n x (d + 1) numbers of a table."""
    with open(path, newline="") as stream:
        header, *rows = csv.reader(stream)
    return header, np.array(rows, dtype=float)


def folds(rows, seed):
    """Index arrays of the outer folds."""
    return np.array_split(np.random.default_rng(seed).permutation(rows), FOLDS)


def got(y, predicted):
    """1 - SSE / SST; NaN if anything was not predicted."""
    return float(1.0 - np.sum((y - predicted) ** 2) / np.sum((y - np.mean(y)) ** 2))


# --- zel -------------------------------------------------------------------------------------


def told_cop(info, response):
    """CoP and model of `response` from the text of `zel info`: the section "Responses" is a table
    whose columns stand at least two blanks apart."""
    lines = iter(info.splitlines())
    for line in lines:
        if line.startswith("Responses"):
            break
    columns = re.split(r"\s{2,}", next(lines).strip())
    for line in lines:
        cells = re.split(r"\s{2,}", line.strip())
        if cells[0] == response:
            return float(cells[columns.index("CoP")]), cells[columns.index("model")]
    raise ValueError("no CoP of " + response + " in:\n" + info)


class Failed(Exception):
    """A program that did not end well; tells its exit status (-11: it crashed) and first words."""


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode != 0:
        words = (done.stderr or done.stdout).strip()[:300]
        raise Failed(f"{command[1]} ended with {done.returncode}: {words}")
    return done.stdout


def zel_fold(zel, options, header, table, test):
    """Told CoP, model, seconds of the training, and the predictions at the rows `test`."""
    *inputs, response = header
    with tempfile.TemporaryDirectory() as place:
        train_csv, test_csv, project = (place + "/" + name
                                        for name in ("train.csv", "test.csv", "model.vrdb"))
        write_csv(train_csv, header, np.delete(table, test, axis=0))
        write_csv(test_csv, inputs, table[test, :-1])
        start = time.monotonic()
        run(zel, "train", train_csv, "--inputs", ",".join(inputs), "--responses", response,
            "-o", project, "--quiet", *options)
        seconds = time.monotonic() - start
        cop, model = told_cop(run(zel, "info", project), response)
        run(zel, "solve", project, "--in", test_csv, "--extrapolate", "-o", place + "/out.csv")
        return cop, model, seconds, read_csv(place + "/out.csv")[1][:, 0]


def zel_split(pool, zel, options, header, table, seed):
    """Told and got of one split, the models of its folds, the longest training."""
    y = table[:, -1]
    tests = folds(len(table), seed)
    predicted = np.full(len(y), np.nan)
    jobs = [pool.submit(zel_fold, zel, options, header, table, test) for test in tests]
    cops, models, seconds, failures = [], [], [], []
    for test, job in zip(tests, jobs):
        try:
            cop, model, time_taken, predicted[test] = job.result()
        except Failed as failure:
            failures.append(str(failure))
            continue
        cops.append(cop)
        models.append(model)
        seconds.append(time_taken)
    return {"told": statistics.fmean(cops) if cops else float("nan"), "got": got(y, predicted),
            "models": models, "seconds": max(seconds, default=float("nan")), "failures": failures}


def zel_result(pool, zel, options, path, seeds):
    """Told and got of one table, the mean over the splits; what each split gave, by its seed."""
    header, table = read_csv(path)
    splits = {seed: zel_split(pool, zel, options, header, table, seed) for seed in seeds}
    every = splits.values()
    return {"told": statistics.fmean(split["told"] for split in every),
            "got": statistics.fmean(split["got"] for split in every),
            "models": [model for split in every for model in split["models"]],
            "seconds": max(split["seconds"] for split in every),
            "failures": [failure for split in every for failure in split["failures"]],
            "rows": len(table), "inputs": table.shape[1] - 1, "splits": splits}


# --- peers -----------------------------------------------------------------------------------


class Process:
    """A Gaussian process on standardised inputs, with a length for each and with noise."""

    def fit(self, x, y):
        if len(y) > MOST_PROCESS_ROWS:
            chosen = np.random.default_rng(0).choice(len(y), MOST_PROCESS_ROWS, replace=False)
            x, y = x[chosen], y[chosen]
        dim = x.shape[1]
        kernel = (ConstantKernel(1.0, (1e-3, 1e3)) * RBF(np.full(dim, np.sqrt(dim)), (1e-2, 1e3)) +
                  WhiteKernel(0.1, (1e-6, 1e1)))
        self.model = make_pipeline(StandardScaler(), GaussianProcessRegressor(
            kernel, normalize_y=True, random_state=0,
            n_restarts_optimizer=1 if len(y) < MANY_PROCESS_ROWS else 0))
        self.model.fit(x, y)
        return self

    def predict(self, x):
        return self.model.predict(x)


def make_peer(name):
    alphas = np.logspace(-4, 4, 33)
    if name == "ridge":
        return make_pipeline(StandardScaler(), RidgeCV(alphas))
    if name == "quadratic":
        return make_pipeline(StandardScaler(), PolynomialFeatures(2, include_bias=False),
                             StandardScaler(), RidgeCV(alphas))
    if name == "process":
        return Process()
    if name == "boosting":
        return GradientBoostingRegressor(n_estimators=300, learning_rate=0.05, max_depth=3,
                                         subsample=0.7, min_samples_leaf=3, random_state=0)
    return RandomForestRegressor(300, min_samples_leaf=2, random_state=0)


def peer_result(path, seed):
    """Got of each peer on one table."""
    _, table = read_csv(path)
    x, y = table[:, :-1], table[:, -1]
    results = {}
    for name in PEERS:
        predicted = np.empty(len(y))
        for test in folds(len(y), seed):
            with warnings.catch_warnings():
                warnings.simplefilter("ignore")  # a length at its bound is no news here
                peer = make_peer(name).fit(np.delete(x, test, axis=0), np.delete(y, test))
                predicted[test] = peer.predict(x[test])
        results[name] = got(y, predicted)
    return results


def key_of(seed):
    return "seed " + str(seed)


def fill_peers(paths, seeds, jobs, cache_path):
    """Computes what peers.json lacks: {"seed 1": {table: {peer: got}}}."""
    cache = read_peers(cache_path)
    with concurrent.futures.ProcessPoolExecutor(jobs) as pool:
        missing = {pool.submit(peer_result, path, seed): (key_of(seed), path.stem)
                   for seed in seeds for path in paths
                   if path.stem not in cache.get(key_of(seed), {})}
        for count, job in enumerate(concurrent.futures.as_completed(missing), 1):
            key, table = missing[job]
            cache.setdefault(key, {})[table] = job.result()
            cache_path.write_text(json.dumps(cache, indent=1, sort_keys=True))
            progress(f"peers: {count} of {len(missing)} tables")


def read_peers(cache_path):
    return json.loads(cache_path.read_text()) if cache_path.exists() else {}


def mean_peers(cache, seeds):
    """{table: {peer: got}}, the mean over the splits, of tables for which all splits are known."""
    splits = [cache.get(key_of(seed), {}) for seed in seeds]
    return {table: {peer: statistics.fmean(split[table][peer] for split in splits)
                    for peer in PEERS}
            for table in splits[0] if all(table in split for split in splits)}


def progress(text):
    print(text, end="\n" if not sys.stderr.isatty() else "\r", file=sys.stderr, flush=True)


# --- report ----------------------------------------------------------------------------------


def best(peers):
    return max(peers[name] for name in PEERS)


def count_models(models):
    """'Kriging x3, Linear Regression | 1 x2'"""
    return ", ".join(f"{model} x{models.count(model)}" for model in dict.fromkeys(models))


def print_table(results, peers):
    print("| table | rows x inputs | told | got | told - got | ridge | quadratic ridge "
          "| Gaussian process | boosting | forest | ours - best | seconds | got of each split "
          "| models |")
    print("|---|---|" + "---:|" * 10 + "---|---|")
    for name, ours in results.items():
        figures = [ours["told"], ours["got"], ours["told"] - ours["got"]]
        figures += [peers[name][peer] for peer in PEERS] if name in peers else [float("nan")] * 5
        figures.append(ours["got"] - (best(peers[name]) if name in peers else float("nan")))
        splits = " ".join(f"{split['got']:.2f}" for split in ours["splits"].values())
        # A bar would end the cell.
        models = count_models(ours["models"]).replace(" | ", " ")
        print(f"| {name} | {ours['rows']} x {ours['inputs']} | "
              + " | ".join(f"{figure:.3f}" for figure in figures)
              + f" | {ours['seconds']:.2f} | {splits} | {models} |")


def print_gap(title, results, least, most):
    """Mean and extremes of told - got over the tables of a range of sizes."""
    gaps = {name: ours["told"] - ours["got"] for name, ours in results.items()
            if least <= ours["rows"] <= most and np.isfinite(ours["got"])}
    if not gaps:
        return
    high, low = max(gaps, key=gaps.get), min(gaps, key=gaps.get)
    print(f"- told - got, {title} ({len(gaps)} tables): mean {statistics.fmean(gaps.values()):+.3f}"
          f", median {statistics.median(gaps.values()):+.3f}, highest {gaps[high]:+.3f} ({high}), "
          f"lowest {gaps[low]:+.3f} ({low}), above +0.15: "
          + (", ".join(name for name, gap in gaps.items() if gap > 0.15) or "none"))


def print_summary(results, peers):
    """The figures that a promise can be made about. Of tables of pure noise only the told counts:
    there the best peer is the luckiest one."""
    noise = {name: ours for name, ours in results.items() if name.startswith("noise_")}
    results = {name: ours for name, ours in results.items() if name not in noise}
    print_gap("up to 60 rows", results, 0, 60)
    print_gap("61 to 200 rows", results, 61, 200)
    print_gap("more than 200 rows", results, 201, sys.maxsize)
    if noise:
        print("- pure noise is told as: "
              + ", ".join(f"{name} {ours['told']:.3f}" for name, ours in noise.items()))
    compared = {name: ours for name, ours in results.items() if name in peers}
    if compared:
        ahead = {name: peers[name]["ridge"] - ours["got"] for name, ours in compared.items()
                 if not peers[name]["ridge"] - ours["got"] <= 0.02}
        print(f"- ridge is ahead by more than 0.02 on {len(ahead)} of {len(compared)} tables: "
              + ", ".join(f"{name} {lead:.3f}"
                          for name, lead in sorted(ahead.items(), key=lambda item: -item[1])))
        margins = sorted((ours["got"] - best(peers[name]), name)
                         for name, ours in compared.items() if np.isfinite(ours["got"]))
        low = [f"{name} {margin:+.3f}" for margin, name in margins if margin < -0.06]
        print(f"- ours - best of five: median {statistics.median(m for m, _ in margins):+.3f}, "
              f"mean {statistics.fmean(m for m, _ in margins):+.4f}; below -0.06 on {len(low)}: "
              + ", ".join(low))
        margins = [ours["got"] - peers[name]["process"] for name, ours in compared.items()
                   if 200 <= ours["rows"] <= 1100]
        if margins:
            print(f"- ours - Gaussian process, 200 to 1,100 rows ({len(margins)} tables): median "
                  f"{statistics.median(margins):+.3f}, lowest {min(margins):+.3f}")
    slow = max(results, key=lambda name: results[name]["seconds"], default=None)
    small = [ours["seconds"] for ours in results.values() if ours["rows"] <= 60]
    if slow:
        print(f"- longest training: {results[slow]['seconds']:.2f} s ({slow})"
              + (f"; up to 60 rows {max(small):.2f} s" if small else ""))
    for name, ours in {**results, **noise}.items():
        for failure in ours["failures"]:
            print(f"- {name} failed: {failure}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("folder", type=pathlib.Path, help="tables of export_tables.R")
    parser.add_argument("--zel", default="zel", help="program to judge")
    parser.add_argument("--option", action="append", default=[], metavar="OPTION",
                        help="handed to zel train: --option=--anisotropic; may be repeated")
    parser.add_argument("--tables", default="*", metavar="GLOB",
                        help="some of the tables: 'c*,iris'")
    parser.add_argument("--most-rows", type=int, default=sys.maxsize, help="no larger tables")
    parser.add_argument("--seeds", type=lambda text: [int(seed) for seed in text.split(",")],
                        default=[1, 2, 3], metavar="1,2,3",
                        help="of the outer splits that figures are averaged over")
    parser.add_argument("--jobs", type=int, default=1, help="folds at a time; one for true seconds")
    parser.add_argument("--out", type=pathlib.Path, default=pathlib.Path("."),
                        help="folder of peers.json and of the results as results.json")
    parser.add_argument("--no-peers", action="store_true",
                        help="compute none; the cached ones show")
    arguments = parser.parse_args()

    export_sklearn_tables(arguments.folder)
    sizes = {path: len(read_csv(path)[1]) for path in sorted(arguments.folder.glob("*.csv"))
             if any(fnmatch.fnmatch(path.stem, glob) for glob in arguments.tables.split(","))}
    paths = sorted((path for path in sizes if sizes[path] <= arguments.most_rows), key=sizes.get)
    if not paths:
        parser.error(f"no tables in {arguments.folder}: see export_tables.R")
    arguments.out.mkdir(parents=True, exist_ok=True)
    cache_path = arguments.out / "peers.json"
    if not arguments.no_peers:
        fill_peers(paths, arguments.seeds, arguments.jobs, cache_path)
    peers = mean_peers(read_peers(cache_path), arguments.seeds)

    results = {}
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for path in paths:
            results[path.stem] = zel_result(pool, arguments.zel, arguments.option, path,
                                            arguments.seeds)
            progress(f"zel: {path.stem}, {len(results)} of {len(paths)} tables")
    (arguments.out / "results.json").write_text(json.dumps(results, indent=1))
    print_table(results, peers)
    print()
    print_summary(results, peers)


if __name__ == "__main__":
    main()
