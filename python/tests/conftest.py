"""What the tests share. Run by ctest, which names the library and the programs of its build tree;
by hand after a release build:  python3 -m pytest python/tests"""

import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "release"
os.environ.setdefault("ZELSOLVER_LIBRARY", str(BUILD / "src/api/libzelsolver.so"))
os.environ.setdefault("ZELSTUDY_LIBRARY", str(BUILD / "src/study/libzelstudy.so"))
sys.path.insert(0, os.environ.setdefault("PYTHONPATH", str(ROOT / "python")))

import numpy as np
import pytest
import zelsolver

ZEL = os.environ.get("ZEL_PROGRAM", str(BUILD / "cli/zel"))
PROJECTS = pathlib.Path(os.environ.get("ZEL_TEST_PROJECTS", BUILD / "tests/end_to_end/projects"))
SAMPLE = ROOT / "examples" / "zel_tenbar.vrdb"


class Plate:
    """A project whose models are the polynomials that the tests write down here."""

    path = PROJECTS / "plate.vrdb"
    inputs = ("x", "y", "Größe")
    lower, upper = np.array([0.0, -1.0, 10.0]), np.array([2.0, 1.0, 20.0])
    responses = ("mass", "flat", "stress[0]", "stress[1]", "stress[2]")
    #: Quadratic regressions of values up to 60 reproduce polynomials to rounding.
    tolerance = 1e-9

    @staticmethod
    def values(designs):
        x, y, z = np.asarray(designs).T
        return {"mass": 1 + 2 * x - 3 * y + 0.5 * z, "flat": 2 - x, "stress[0]": x**2 + y,
                "stress[1]": x * y - z, "stress[2]": 0.1 * z**2 - x * z}

    @classmethod
    def designs(cls, n, seed=1):
        return np.random.default_rng(seed).uniform(cls.lower, cls.upper, (n, 3))


def truss_designs(n, seed=1):
    return np.random.default_rng(seed).uniform(6.0, 24.0, (n, 10))


def assert_plate(solution, designs):
    for name, expected in Plate.values(designs).items():
        np.testing.assert_allclose(solution[name], expected, rtol=0, atol=Plate.tolerance)


def run_python(code, *arguments, **environment):
    """Runs code in an interpreter of its own; returns what it prints."""
    result = subprocess.run([sys.executable, "-c", code, *map(str, arguments)], text=True,
                            capture_output=True, timeout=120, env={**os.environ, **environment})
    assert result.returncode == 0, result.stderr
    return result.stdout


@pytest.fixture
def plate():
    with zelsolver.Project(Plate.path) as project:
        yield project


@pytest.fixture
def truss():
    with zelsolver.Project(SAMPLE) as project:
        yield project
