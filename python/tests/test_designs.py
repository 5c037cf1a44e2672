"""What is accepted as designs, and what is refused."""

import collections
import decimal
import fractions

import numpy as np
import pandas
import pytest
import zelsolver
from conftest import Plate, assert_plate, run_python, truss_designs
from zelsolver.designs import as_matrix

DESIGNS = Plate.designs(6)
WHOLE = np.array([[1, 0, 12], [2, -1, 19], [0, 1, 20]])


def by_name(designs=DESIGNS):
    return dict(zip(Plate.inputs, designs.T))


@pytest.mark.parametrize("form", [
    lambda d: d.tolist(), lambda d: tuple(map(tuple, d)), np.ascontiguousarray, np.asfortranarray,
    lambda d: np.repeat(np.repeat(d, 2, 0), 2, 1)[::2, ::2], lambda d: d[::-1].copy()[::-1],
    lambda d: d.astype(">f8"), lambda d: d.astype(np.longdouble), lambda d: d.astype(object),
    lambda d: np.asfortranarray(d).view(np.matrix), by_name,
    lambda d: {"other": "text", **by_name(d)},
    lambda d: {k: list(v) for k, v in reversed(by_name(d).items())},
    lambda d: np.array(list(map(tuple, d)), [(n, float) for n in reversed(("Größe", "y", "x"))]),
    lambda d: pandas.DataFrame(by_name(d)), lambda d: pandas.DataFrame(by_name(d))[::-1][::-1],
    lambda d: pandas.DataFrame({"Größe": d[:, 2], "t": "a", "y": d[:, 1], "x": d[:, 0]}),
    lambda d: pandas.DataFrame(by_name(d))[["Größe", "x", "y"]],
    lambda d: pandas.DataFrame(by_name(d)).astype("Float64"),
    lambda d: pandas.DataFrame(by_name(d)).astype({"y": object}),
    lambda d: dict(pandas.DataFrame(by_name(d)).items()),
])
def test_accepts_every_form_of_the_same_designs(plate, form):
    X = form(DESIGNS)
    np.testing.assert_array_equal(as_matrix(X, Plate.inputs), DESIGNS)
    assert_plate(plate.solve(X), DESIGNS)


@pytest.mark.parametrize("form", [
    lambda d: d, lambda d: d.astype(np.int8), lambda d: d.astype(np.float32), np.ndarray.tolist,
    lambda d: d.astype(np.uint64) if (d >= 0).all() else d.astype(np.float16),
    lambda d: [[decimal.Decimal(int(v)) for v in row] for row in d],
    lambda d: [[fractions.Fraction(int(v)) for v in row] for row in d],
    lambda d: pandas.DataFrame(d, columns=Plate.inputs),
    lambda d: pandas.DataFrame(d, columns=Plate.inputs).astype("Int64"),
])
def test_accepts_every_type_of_number(plate, form):
    assert_plate(plate.solve(form(WHOLE)), WHOLE)


def test_one_design(plate):
    row = pandas.DataFrame(by_name()).iloc[2]
    for X in (DESIGNS[2], DESIGNS[2].tolist(), DESIGNS[2:3], row, row[::-1], dict(row),
              collections.OrderedDict(row), {"unused": "text", **dict(zip(Plate.inputs, row))}):
        solution = plate.solve(X)
        assert solution["mass"].shape == (1,)
        assert_plate(solution, DESIGNS[2:3])


def test_a_single_number_stands_for_all_designs(plate):
    x = np.linspace(0, 2, 9)
    expected = np.column_stack([x, np.zeros(9), np.full(9, 15.0)])
    assert_plate(plate.solve({**plate.reference, "x": x}), expected)
    assert_plate(plate.solve({"x": x, "y": np.float32(0), "Größe": np.array(15)}), expected)
    assert_plate(plate.solve(plate.reference), [[1, 0, 15]])


def test_uses_fitting_arrays_in_place():
    fitting = np.asfortranarray(DESIGNS)
    frame = pandas.DataFrame(fitting, columns=Plate.inputs)
    for X in (fitting, fitting[:, :].view(), frame, DESIGNS[:1]):
        matrix = as_matrix(X, Plate.inputs)
        assert np.shares_memory(matrix, np.asarray(X)) and matrix.flags.f_contiguous
    readonly = fitting.copy(order="F")
    readonly.flags.writeable = False
    assert np.shares_memory(as_matrix(readonly, Plate.inputs), readonly)


def test_leaves_the_callers_values_alone(plate):
    for X in (np.asfortranarray(DESIGNS), np.ma.masked_greater(DESIGNS, 15)):
        before = np.array(X.data)
        plate.solve(X, errors=True)
        plate.gradients(X)
        np.testing.assert_array_equal(np.asarray(X.data), before)


def test_missing_values_are_nan(plate):
    masked = np.ma.array(DESIGNS, mask=False)
    masked[1, 0] = np.ma.masked
    frame = pandas.DataFrame(by_name())
    nullable = frame.astype("Float64")
    nullable.iloc[1, 0] = pandas.NA
    frame.iloc[1, 0] = None
    rows = DESIGNS.tolist()
    rows[1][0] = None
    for X in (masked, frame, nullable, rows):
        assert np.isnan(plate.solve(X)["mass"]).tolist() == [False, True] + [False] * 4
    assert np.isnan(plate.solve({"x": 1.5, "y": None, "Größe": 12})["mass"]).tolist() == [True]


@pytest.mark.parametrize("X, text", [
    (DESIGNS.T, r"shape (3, 6): expected (n, 3)"), (DESIGNS[:, :2], "shape (6, 2)"),
    (DESIGNS[None], "shape (1, 6, 3)"), (DESIGNS[0, :2], "shape (2,)"), (1.0, "shape ()"),
    ([], "shape (0,)"), (None, "shape ()"), ([[1, 2, 3], [1, 2]], "the designs: "),
    (DESIGNS.astype(str), "is not a type of real numbers"), ("x", "is not a type of real numbers"),
    ([[1, 0, "15"]], "is not a type of real numbers"), ({"x", "y"}, "is not a real number"),
    (DESIGNS.astype(complex), "complex128"), (DESIGNS.astype("M8[s]"), "datetime64[s]"),
    (np.array([[1, 0, 15], [1, "0", 15]], object), "'0' at (1, 1) is not a real number"),
    (np.array([[1, 0, 10**400]], object), "is not a real number"),
    (np.array([[1, 0, 1j]], object), "is not a real number"),
    ({}, 'no column for the inputs "x", "y", "Größe"'),
    ({"x": 1, "Y": 0, "Größe": 15}, 'no column for the input "y"'),
    (pandas.DataFrame(DESIGNS), 'no column for the inputs "x"'),
    (pandas.DataFrame(DESIGNS, columns=["x", "y", "size"]), 'no column for the input "Größe"'),
    (pandas.DataFrame(np.ones((2, 4)), columns=["x", "y", "y", "Größe"]), '2 columns "y"'),
    ({"x": [1, 2], "y": [0, 0, 0], "Größe": 15}, 'different lengths: "x" has 2, "y" has 3'),
    ({"x": [[1]], "y": 0, "Größe": 15}, 'column "x" has the shape (1, 1)'),
    ({"x": [1, "a"], "y": 0, "Größe": 15}, 'column "x": <U'),
    ({"x": 1, "y": "0", "Größe": 15}, 'column "y": <U1 is not a type of real numbers'),
    ({"x": 1, "y": 10**400, "Größe": 15}, 'column "y"'), ({"x": 1, "y": 1j, "Größe": 15}, '"y"'),
    (pandas.DataFrame({"x": [1, 1.5, "2,5"], "y": 0, "Größe": 15}),
     "column \"x\": '2,5' at 2 is not a real number"),
])
def test_refuses_what_does_not_fit_and_says_where(plate, X, text):
    for call in (plate.solve, plate.errors, lambda X: plate.gradients(X, "mass")):
        with pytest.raises(zelsolver.InputError) as caught:
            call(X)
        assert text in str(caught.value)


def test_frames_of_results_keep_the_index(plate):
    frame = pandas.DataFrame(by_name(), index=list("abcdef"))
    result = plate.solve(frame, density=True, errors=True).to_frame()
    assert list(result.index) == list("abcdef")
    assert list(result.columns[:8]) == [*Plate.responses, "goal", "limit", "mass:density"]
    joined = frame.join(result)
    np.testing.assert_allclose(joined["flat"], 2 - joined["x"], atol=Plate.tolerance)
    assert list(plate.solve(DESIGNS).to_frame().index) == list(range(6))


def test_works_without_pandas(truss):
    designs = truss_designs(2)
    printed = run_python("""
import sys
sys.modules["pandas"] = None  # an import of it fails
import numpy, zelsolver
project = zelsolver.Project(sys.argv[1])
designs = numpy.random.default_rng(1).uniform(6.0, 24.0, (2, 10))
solution = project.solve(dict(zip(project.inputs, designs.T)))
print(*solution["mass"], *project.solve(designs.astype(object), errors=True)["mass"])
try:
    solution.to_frame()
except ImportError:
    print("no pandas")
""", truss.path)
    values, refusal = printed.splitlines()[-2:]  # the library's log stands before
    mass = list(truss.solve(designs)["mass"])
    assert [float(v) for v in values.split()] == mass + mass
    assert refusal == "no pandas"
