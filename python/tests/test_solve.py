"""Predictions, against closed forms, differences, and the program zel."""

import csv
import io
import pickle
import subprocess

import numpy as np
import pandas
import pytest
import zelsolver
from conftest import PROJECTS, SAMPLE, ZEL, Plate, assert_plate, truss_designs
from zelsolver import blocks


def test_responses_and_criteria_have_their_closed_forms(plate):
    designs = Plate.designs(50)
    solution = plate.solve(pandas.DataFrame(designs, columns=Plate.inputs, index=range(7, 57)))
    assert_plate(solution, designs)
    assert tuple(solution) == Plate.responses + ("goal", "limit")
    np.testing.assert_array_equal(solution["limit"], 3 - solution["stress[0]"])
    np.testing.assert_array_equal(np.asarray(solution.responses)[:, 2], solution["stress[0]"])
    np.testing.assert_array_equal(plate.predict(designs), solution.responses)
    frame = solution.to_frame()
    assert tuple(frame.columns) == solution.columns() and list(frame.index) == list(range(7, 57))
    np.testing.assert_array_equal(frame, solution.to_array())
    assert not solution.density and not solution.errors and not solution.refused
    assert tuple(plate.solve(designs, criteria=False)) == Plate.responses
    with pytest.raises(zelsolver.UnknownNameError, match='no response or criterion "weight"'):
        solution["weight"]
    with pytest.raises(KeyError, match="density=True"):
        solution.density["mass"]


def test_gradients_are_those_of_the_polynomials(plate):
    designs = Plate.designs(20)
    everything = plate.gradients(designs)
    for i, step in enumerate(np.eye(3)):
        above, below = Plate.values(designs + step), Plate.values(designs - step)
        for name in Plate.responses:  # the difference of a quadratic polynomial is exact
            expected = (above[name] - below[name]) / 2
            # Central differences over 1e-4 of the range, of values near 60.
            np.testing.assert_allclose(everything[name][Plate.inputs[i]], expected, atol=1e-6)
            np.testing.assert_array_equal(everything[name].array[:, i],
                                          plate.gradients(designs, name)[Plate.inputs[i]])


def test_gives_what_the_program_zel_gives(truss):
    designs = truss_designs(40)
    table = io.StringIO()
    csv.writer(table).writerows([truss.inputs, *designs.tolist()])
    printed = subprocess.run([ZEL, "solve", SAMPLE, "--in", "-", "--criteria", "--density",
                              "--errors"], input=table.getvalue(), capture_output=True, text=True,
                             check=True).stdout
    frame = truss.solve(designs, errors=True, density=True).to_frame()
    # The shortest text of a double reads back exactly.
    pandas.testing.assert_frame_equal(
        frame, pandas.read_csv(io.StringIO(printed), dtype=float, float_precision="round_trip"),
        rtol=0, atol=0)
    name = "displacement"
    np.testing.assert_array_equal(truss.density(designs, name), frame[f"{name}:density"])
    np.testing.assert_array_equal(truss.density(designs)[name], frame[f"{name}:density"])
    errors = truss.errors(designs, name)
    np.testing.assert_array_equal(errors, truss.errors(designs)[name])
    for error, values in errors._asdict().items():
        np.testing.assert_array_equal(values, frame[f"{name}:{error}"])
    # As averages with the same weights are ordered.
    assert (errors.rmse > errors.mean_abs_error).all()
    assert (errors.mean_abs_error >= abs(errors.mean_error)).all() and (errors.local_cop < 1).all()


def test_models_that_know_no_errors_cost_only_their_own(truss, capfd):
    designs = truss_designs(3)
    for _ in range(3):
        solution = truss.solve(designs, errors=True, density=True)
        gradients = truss.gradients(designs)
    assert capfd.readouterr().err == ""  # `refused` tells
    assert list(solution.refused) == ["stress[8]"]  # thin plate splines
    assert np.isfinite(solution.responses.array).all()
    for name in truss.responses:
        for values in (solution.density[name], solution.errors[name], gradients[name]):
            assert (np.isfinite(values) == (name != "stress[8]")).all()
    for ask, text in ((truss.errors, "needs BuildErrors"), (truss.density, "needs BuildErrors"),
                      (truss.gradients, "not implemented for SurrogateTPS")):
        with pytest.raises(zelsolver.ModelError, match=text):
            ask(designs, "stress[8]")
        with pytest.raises(zelsolver.UnknownNameError, match='no response "weight"'):
            ask(designs, "weight")


def test_a_missing_model_is_nan():
    designs = Plate.designs(4)
    with zelsolver.Project(PROJECTS / "missing_model.vrdb") as project:
        solution, gradients = project.solve(designs, errors=True), project.gradients(designs)
        for values in (solution, solution.errors, gradients):
            assert np.isnan(values["mass"]).all() and np.isfinite(values["flat"]).all()
        with pytest.raises(zelsolver.ModelError, match="Error extracting densities and Errors."):
            project.density(designs, "mass")


def test_bounds_are_kept_unless_extrapolated(plate):
    designs = Plate.designs(12)
    designs[9:, 1] = [1.5, -7, 1.5]
    designs[2], designs[5] = Plate.lower, Plate.upper  # on the bounds, and within the tolerance
    designs[3], designs[4] = Plate.lower - 0.9e-8, Plate.upper + 0.9e-8
    for method in (plate.solve, plate.gradients, plate.errors, plate.density, plate.predict):
        with pytest.raises(zelsolver.BoundsError) as caught:
            method(designs)
        error = caught.value
        assert (error.row, error.input, error.value, error.bounds) == (9, "y", 1.5, (-1, 1))
        assert str(error) == "Value 1.5 of Parameter y violates bounds: [-1, 1] (design 9)"
        twin = pickle.loads(pickle.dumps(error))
        assert (str(twin), vars(twin)) == (str(error), vars(error))
        method(designs, extrapolate=True)
    assert_plate(plate.solve(designs, extrapolate=True), designs)
    assert_plate(plate.solve(designs[:9]), designs[:9])


def test_arrays_are_solved_in_blocks(truss, monkeypatch):
    def all_of(designs):
        return (truss.solve(designs, errors=True, density=True).to_array(),
                truss.gradients(designs, "mass").array)

    designs = truss_designs(24)
    outside = designs.copy()
    outside[17, 4] = 99
    assert [values.shape for values in all_of(designs[:0])] == [(0, 12 + 5 + 12 * 5), (0, 10)]
    whole = all_of(designs)
    monkeypatch.setattr(blocks, "_BLOCK", 7)
    pieces = all_of(designs)
    with pytest.raises(zelsolver.BoundsError, match="design 17"):
        truss.solve(outside)
    # Sums over blocks of rows may be vectorised differently.
    np.testing.assert_allclose(pieces[0], whole[0], rtol=1e-10)
    np.testing.assert_allclose(pieces[1], whole[1], rtol=1e-6)


def test_results_own_their_memory_and_can_be_pickled(plate):
    designs = np.asfortranarray(Plate.designs(100))
    first = plate.solve(designs, errors=True, density=True)
    kept, frame = pickle.loads(pickle.dumps(first)), first.to_frame()
    for seed in range(20):  # neither later calls nor changes of the inputs touch them
        plate.solve(Plate.designs(100, seed), errors=True)
    designs[:] = 0
    plate.close()
    assert first.to_frame().equals(frame) and kept.to_frame().equals(frame)
