"""What is accepted as designs, and what is refused."""

import decimal

import numpy as np
import pandas
import pytest
import zelsolver
from conftest import Plate, assert_plate, run_python
from zelsolver.designs import as_matrix

DESIGNS = np.array([[1, 0, 12], [2, -1, 19], [0, 1, 20]])  # of any type of number


def by_name(designs=DESIGNS):
    return dict(zip(Plate.inputs, designs.T))


def frame(designs=DESIGNS):
    return pandas.DataFrame(by_name(designs))


@pytest.mark.parametrize("form", [
    lambda d: d.tolist(), lambda d: tuple(map(tuple, d)), np.asfortranarray,
    lambda d: np.repeat(np.repeat(d, 2, 0), 2, 1)[::2, ::2], lambda d: d[::-1].copy()[::-1],
    lambda d: d.astype(np.int8), lambda d: d.astype(">f8"), lambda d: d.astype(np.longdouble),
    lambda d: d.astype(np.float16), lambda d: d.astype(object),
    lambda d: [[decimal.Decimal(int(v)) for v in row] for row in d], by_name,
    lambda d: {"other": "text", **by_name(d)},
    lambda d: {k: list(v) for k, v in reversed(by_name(d).items())},
    lambda d: np.array(list(map(tuple, d)), [(n, float) for n in reversed(("Größe", "y", "x"))]),
    frame, lambda d: frame(d)[::-1][::-1], lambda d: frame(d)[["Größe", "x", "y"]].assign(t="a"),
    lambda d: frame(d).astype("Float64"), lambda d: frame(d).astype({"y": object}),
    lambda d: dict(frame(d).items()),
])
def test_accepts_every_form_of_the_same_designs(plate, form):
    X = form(DESIGNS)
    np.testing.assert_array_equal(as_matrix(X, Plate.inputs), DESIGNS)
    assert_plate(plate.solve(X), DESIGNS)


def test_accepts_one_design_and_one_number_for_all_designs(plate):
    row = frame().iloc[2]
    for X in (DESIGNS[2], DESIGNS[2].tolist(), row, row[::-1], {"unused": "text", **row}):
        assert_plate(plate.solve(X), DESIGNS[2:3])
    x = np.linspace(0, 2, 9)
    expected = np.column_stack([x, np.zeros(9), np.full(9, 15.0)])
    assert_plate(plate.solve({**plate.reference, "x": x}), expected)
    assert_plate(plate.solve({"x": x, "y": np.float32(0), "Größe": np.array(15)}), expected)


def test_uses_fitting_arrays_in_place_and_leaves_them_alone(plate):
    fitting = np.asfortranarray(DESIGNS.astype(float))
    fitting.flags.writeable = False
    for X in (fitting, fitting[:, :], pandas.DataFrame(fitting, columns=Plate.inputs)):
        assert np.shares_memory(as_matrix(X, Plate.inputs), fitting)
        plate.solve(X, errors=True)
        plate.gradients(X)
        np.testing.assert_array_equal(X, DESIGNS)


def test_missing_values_are_nan(plate):
    masked = np.ma.array(DESIGNS, mask=False)
    masked[1, 0] = np.ma.masked
    plain, nullable, rows = frame().astype(object), frame().astype("Float64"), DESIGNS.tolist()
    plain.iloc[1, 0] = rows[1][0] = None
    nullable.iloc[1, 0] = pandas.NA
    for X in (masked, plain, nullable, rows):
        assert np.isnan(plate.solve(X)["mass"]).tolist() == [False, True, False]


@pytest.mark.parametrize("X, text", [
    (np.ones((3, 6)), "shape (3, 6): expected (n, 3)"), (DESIGNS[:, :2], "shape (3, 2)"),
    (DESIGNS[None], "shape (1, 3, 3)"), (DESIGNS[0, :2], "shape (2,)"), (1.0, "shape ()"),
    ([], "shape (0,)"), (None, "shape ()"), ([[1, 2, 3], [1, 2]], "the designs: "),
    (DESIGNS.astype(str), "is not a type of real numbers"), ({"x", "y"}, "is not a real number"),
    (DESIGNS.astype(complex), "complex128"), (DESIGNS.astype("M8[s]"), "datetime64[s]"),
    (np.array([[1, 0, 15], [1, "0", 15]], object), "'0' at (1, 1) is not a real number"),
    (np.array([[1, 0, 10**400]], object), "is not a real number"),
    ({}, 'no column for the inputs "x", "y", "Größe"'),
    ({"x": 1, "Y": 0, "Größe": 15}, 'no column for the input "y"'),
    (pandas.DataFrame(DESIGNS), 'no column for the inputs "x"'),
    (pandas.DataFrame(np.ones((2, 4)), columns=["x", "y", "y", "Größe"]), '2 columns "y"'),
    ({"x": [1, 2], "y": [0, 0, 0], "Größe": 15}, 'different lengths: "x" has 2, "y" has 3'),
    ({"x": [[1]], "y": 0, "Größe": 15}, 'column "x" has the shape (1, 1)'),
    ({"x": 1, "y": "0", "Größe": 15}, 'column "y": <U1 is not a type of real numbers'),
    ({"x": 1, "y": 10**400, "Größe": 15}, 'column "y"'), ({"x": 1, "y": 1j, "Größe": 15}, '"y"'),
    (pandas.DataFrame({"x": [1, 1.5, "2,5"], "y": 0, "Größe": 15}),
     "column \"x\": '2,5' at 2 is not a real number"),
])
def test_refuses_what_does_not_fit_and_says_where(plate, X, text):
    with pytest.raises(zelsolver.InputError) as caught:
        plate.solve(X)
    assert text in str(caught.value)


def test_works_without_pandas_until_it_is_needed():
    assert run_python("""
import sys
sys.modules["pandas"] = None  # an import of it fails
import numpy, zelsolver
project = zelsolver.Project(sys.argv[1])
solution = project.solve(numpy.array([[1, 0, 15]], object), errors=True)
try:
    solution.to_frame()
except ImportError:
    print(solution["mass"].round(9))
""", Plate.path).splitlines()[-1] == "[10.5]"
