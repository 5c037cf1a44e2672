"""Predictions, against closed forms, differences, and the program zel."""

import csv
import io
import pickle
import subprocess

import numpy as np
import pytest
import zelsolver
from conftest import PROJECTS, SAMPLE, ZEL, Plate, assert_plate, truss_designs
from zelsolver import blocks

ERRORS = ("local_cop", "rmse", "mean_error", "mean_abs_error")


@pytest.fixture
def small_blocks(monkeypatch):
    monkeypatch.setattr(blocks, "_BLOCK", 7)


def test_responses_and_criteria_have_their_closed_forms(plate):
    designs = Plate.designs(50)
    solution = plate.solve(designs)
    assert_plate(solution, designs)
    assert tuple(solution) == Plate.responses + ("goal", "limit")
    np.testing.assert_array_equal(solution["goal"], solution["mass"])
    np.testing.assert_array_equal(solution["limit"], 3 - solution["stress[0]"])
    np.testing.assert_array_equal(np.asarray(solution.responses)[:, 2], solution["stress[0]"])
    assert solution.criteria.array.shape == (50, 2)
    assert not solution.density and not solution.errors and not solution.refused
    assert tuple(plate.solve(designs, criteria=False)) == Plate.responses
    with pytest.raises(zelsolver.UnknownNameError, match='no response or criterion "weight"'):
        solution["weight"]
    with pytest.raises(KeyError, match="density=True"):
        solution.density["mass"]


def test_gradients_have_their_closed_forms(plate):
    designs = Plate.designs(20)
    everything = plate.gradients(designs)
    for name, expected in Plate.gradients(designs).items():
        # Central differences over 1e-4 of the range, of values near 60.
        np.testing.assert_allclose(everything[name], expected, rtol=0, atol=1e-6)
        one = plate.gradients(designs, name)
        np.testing.assert_array_equal(one, everything[name])
        np.testing.assert_array_equal(one["y"], one.array[:, 1])
    with pytest.raises(zelsolver.UnknownNameError, match='no input "mass"'):
        one["mass"]


def test_gradients_are_the_differences_of_solutions(truss):
    designs = truss_designs(5)
    step = 1e-3
    for name, gradients in truss.gradients(designs).items():
        for i, input in enumerate(truss.inputs):
            shift = np.zeros(10)
            shift[i] = step
            difference = (truss.solve(designs + shift, criteria=False)[name] -
                          truss.solve(designs - shift, criteria=False)[name]) / (2 * step)
            if np.isnan(gradients.array).all():
                continue
            # Curvature and rounding of both differences; slopes are near 1 to 50.
            np.testing.assert_allclose(gradients[input], difference, rtol=1e-4, atol=1e-5)
    assert {name for name, g in truss.gradients(designs).items() if np.isnan(g.array).any()} == {
        "stress[8]"}  # thin plate splines


def test_density_counts_the_support_points(plate):
    # "flat" uses x alone, and each of its N support points adds exp(-(x - p)^2 / 2 s^2). Far out
    # only the last point counts: the second difference of the logarithm is -1 / s^2. With s, the
    # integral is N s sqrt(2 pi), and the project was trained on 40 designs.
    def density(x):
        designs = np.column_stack([x, np.zeros_like(x), np.full_like(x, 15.0)])
        return plate.density(designs, "flat", extrapolate=True)

    x = np.linspace(-2, 4, 60001)
    rho = density(x)
    tail = np.flatnonzero((x > 2) & (rho < 1e-30) & (rho > 1e-250))
    h = 100 * (x[1] - x[0])
    with np.errstate(divide="ignore"):
        log = np.log(rho)
    bends = [log[i - 100] - 2 * log[i] + log[i + 100] for i in tail[200:-200:50]]
    s = (-np.mean(bends) / h**2)**-0.5
    assert rho.sum() * (x[1] - x[0]) / (s * np.sqrt(2 * np.pi)) == pytest.approx(40, rel=1e-3)
    assert rho[0] == 0 or rho[0] < 1e-100


def test_gives_what_the_program_zel_gives(truss):
    designs = truss_designs(40)
    table = io.StringIO()
    writer = csv.writer(table)
    writer.writerow(truss.inputs)
    writer.writerows(designs.tolist())
    printed = subprocess.run([ZEL, "solve", SAMPLE, "--in", "-", "--criteria", "--density",
                              "--errors"], input=table.getvalue(), capture_output=True, text=True,
                             check=True).stdout
    records = list(csv.DictReader(io.StringIO(printed)))
    solution = truss.solve(designs, errors=True, density=True)
    frame = solution.to_frame()
    assert list(frame.columns) == list(records[0])
    for name in records[0]:
        # The shortest text of a double reads back exactly.
        np.testing.assert_array_equal(frame[name], [float(record[name]) for record in records])
    np.testing.assert_array_equal(truss.density(designs), solution.density)
    name = "displacement"
    np.testing.assert_array_equal(truss.density(designs, name), solution.density[name])
    errors = truss.errors(designs, name)
    np.testing.assert_array_equal(errors, truss.errors(designs)[name])
    for error, values in zip(ERRORS, errors):
        np.testing.assert_array_equal(values, frame[f"{name}:{error}"])
    # As averages with the same weights are ordered.
    assert (errors.rmse > errors.mean_abs_error).all()
    assert (errors.mean_abs_error >= abs(errors.mean_error)).all() and (errors.local_cop < 1).all()


def test_models_that_know_no_errors_cost_only_their_own(truss, capfd):
    designs = truss_designs(3)
    for _ in range(3):
        solution = truss.solve(designs, errors=True, density=True)
        truss.gradients(designs)
    assert capfd.readouterr().err == ""  # `refused` tells
    assert list(solution.refused) == ["stress[8]"]
    assert "BuildErrors" in solution.refused["stress[8]"]
    assert np.isfinite(solution["stress[8]"]).all()
    for name in truss.responses:
        finite = name != "stress[8]"
        assert (np.isfinite(solution.density[name]) == finite).all()
        assert (np.isfinite(solution.errors[name]) == finite).all()
    for ask, text in ((truss.errors, "needs BuildErrors"), (truss.density, "needs BuildErrors"),
                      (truss.gradients, "not implemented for SurrogateTPS")):
        with pytest.raises(zelsolver.ModelError, match=text) as caught:
            ask(designs, "stress[8]")
        assert caught.value.status == 2
        with pytest.raises(zelsolver.UnknownNameError, match='no response "weight"'):
            ask(designs, "weight")


def test_a_missing_model_is_nan():
    with zelsolver.Project(PROJECTS / "missing_model.vrdb") as project:
        solution = project.solve(Plate.designs(4), errors=True)
        assert np.isnan(solution["mass"]).all() and np.isfinite(solution["flat"]).all()
        assert np.isnan(solution.errors["mass"]).all()
        assert np.isfinite(solution.errors["flat"]).all()
        gradients = project.gradients(Plate.designs(4))
        assert np.isnan(gradients["mass"]).all() and np.isfinite(gradients["flat"]).all()
        with pytest.raises(zelsolver.ModelError, match="Error extracting densities and Errors."):
            project.density(Plate.designs(4), "mass")


def test_bounds_are_kept_unless_extrapolated(plate):
    designs = Plate.designs(12)
    designs[9:, 1] = [1.5, -7, 1.5]
    designs[10, 0] = 3
    designs[2], designs[5] = Plate.lower, Plate.upper  # on the bounds, and within the tolerance
    designs[3], designs[4] = Plate.lower - 0.9e-8, Plate.upper + 0.9e-8
    calls = [lambda **options: plate.solve(designs, **options),
             lambda **options: plate.gradients(designs, "mass", **options),
             lambda **options: plate.gradients(designs, **options),
             lambda **options: plate.errors(designs, "mass", **options),
             lambda **options: plate.errors(designs, **options),
             lambda **options: plate.density(designs, "mass", **options),
             lambda **options: plate.density(designs, **options)]
    for call in calls:
        with pytest.raises(zelsolver.BoundsError) as caught:
            call()
        error = caught.value
        assert (error.row, error.input, error.value, error.bounds) == (9, "y", 1.5, (-1, 1))
        assert str(error) == "Value 1.5 of Parameter y violates bounds: [-1, 1] (design 9)"
        assert isinstance(error, ValueError) and error.status == 2
        twin = pickle.loads(pickle.dumps(error))
        assert (str(twin), vars(twin)) == (str(error), vars(error))
        call(extrapolate=True)
    assert_plate(plate.solve(designs, extrapolate=True), designs)
    assert_plate(plate.solve(designs[:9]), designs[:9])


def test_nan_stays_in_its_design(plate):
    designs = Plate.designs(3)
    designs[1, 1] = np.nan
    solution = plate.solve(designs)
    assert np.isnan(solution["mass"]).tolist() == [False, True, False]
    assert np.isfinite(solution["flat"]).all()  # doesn't use it


def test_no_designs_give_empty_results(truss):
    designs = np.empty((0, 10))
    solution = truss.solve(designs, errors=True, density=True)
    assert solution["mass"].shape == (0,) and solution.criteria.array.shape == (0, 5)
    assert solution.errors["mass"].rmse.shape == (0,)
    assert solution.density.array.shape == (0, 12)
    assert truss.gradients(designs, "mass").array.shape == (0, 10)
    assert len(solution.to_frame()) == 0


def test_large_arrays_are_solved_in_blocks(truss, small_blocks, monkeypatch):
    designs = truss_designs(24)
    pieces = (truss.solve(designs, errors=True, density=True), truss.gradients(designs, "mass"))
    outside = designs.copy()
    outside[17, 4] = 99
    with pytest.raises(zelsolver.BoundsError, match="design 17"):
        truss.solve(outside)
    monkeypatch.undo()
    whole = (truss.solve(designs, errors=True, density=True), truss.gradients(designs, "mass"))
    # Sums over blocks of rows may be vectorised differently.
    np.testing.assert_allclose(pieces[0].to_frame(), whole[0].to_frame(), rtol=1e-10)
    np.testing.assert_allclose(pieces[1], whole[1], rtol=1e-6)


def test_results_own_their_memory_and_can_be_pickled(plate):
    designs = np.asfortranarray(Plate.designs(100))
    first = plate.solve(designs, errors=True, density=True)
    kept = pickle.loads(pickle.dumps(first))
    frame = first.to_frame()
    for seed in range(20):  # neither later calls nor changes of the inputs touch them
        plate.solve(Plate.designs(100, seed), errors=True)
    designs[:] = 0
    plate.close()
    assert first.to_frame().equals(frame) and kept.to_frame().equals(frame)
    assert kept.refused == first.refused and tuple(kept.density) == Plate.responses
