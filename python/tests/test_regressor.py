"""The estimator, by the rules of scikit-learn and in its tools."""

import numpy as np
import pandas
import pytest
import zelsolver

pytest.importorskip("sklearn")
from sklearn.compose import TransformedTargetRegressor
from sklearn.model_selection import GridSearchCV, cross_val_score
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler
from sklearn.utils.estimator_checks import parametrize_with_checks

FAST = 0.05  # seconds of training


@parametrize_with_checks([zelsolver.Regressor(budget=FAST)])
def test_keeps_the_rules_of_estimators(estimator, check):
    check(estimator)


@pytest.fixture(scope="module")
def frame():
    points = np.random.default_rng(2).uniform(-1, 1, (60, 3))
    return pandas.DataFrame(points, columns=["Breite", "höhe", "c"])


def targets(frame):
    """Polynomials, which quadratic regressions reproduce."""
    return pandas.DataFrame({"mass": 1 + 2 * frame["Breite"] - frame["höhe"],
                             "c": frame["höhe"]**2 + frame["Breite"] * frame["c"]})


def test_predicts_several_targets_with_their_errors(frame):
    unseen = frame.sample(20, random_state=1) * 0.9
    model = zelsolver.Regressor(budget=1).fit(frame, targets(frame))
    assert list(model.feature_names_in_) == list(frame.columns)
    assert model.project_.responses == ("mass", "c_")  # an input is "c" already
    values, std = model.predict(unseen, return_std=True)
    np.testing.assert_allclose(values, targets(unseen), atol=1e-6)
    assert std.shape == values.shape and (std >= 0).all() and std.max() < 1e-3
    shuffled = np.asfortranarray(unseen)  # numbers alone, and the same DataFrame in other forms
    with pytest.warns(UserWarning, match="does not have valid feature names"):
        np.testing.assert_array_equal(model.predict(shuffled), values)
    np.testing.assert_array_equal(model.predict(unseen.astype(object)), values)
    one = zelsolver.Regressor(budget=FAST).fit(frame, targets(frame)["mass"])
    assert one.project_.responses == ("mass",) and one.predict(unseen).shape == (20,)
    for bad, text in ((unseen[["c", "höhe", "Breite"]], "must be in the same order"),
                      (unseen * np.nan, "NaN"), (unseen[["c"]], "missing")):
        with pytest.raises(ValueError, match=text):
            model.predict(bad)


def test_constant_inputs_are_dropped_and_may_come_along(frame):
    wide = frame.assign(fixed=1.0)
    model = zelsolver.Regressor(budget=FAST).fit(wide, targets(frame)["mass"])
    assert "fixed" not in model.project_.inputs
    for X in (wide, wide.astype(object)):
        np.testing.assert_allclose(model.predict(X), targets(frame)["mass"], atol=1e-6)


def test_works_in_the_tools_of_scikit_learn(frame):
    mass = targets(frame)["mass"]
    pipeline = make_pipeline(StandardScaler(), zelsolver.Regressor(budget=FAST))
    scores = cross_val_score(pipeline, frame, mass, cv=3, n_jobs=2)  # in processes
    assert scores.min() > 0.999999
    search = GridSearchCV(zelsolver.Regressor(), {"budget": [FAST, 2 * FAST], "seed": [1, 2]}, cv=2,
                          n_jobs=2).fit(frame, targets(frame))
    assert search.best_score_ > 0.9999 and search.best_params_["seed"] in (1, 2)
    logarithm = TransformedTargetRegressor(zelsolver.Regressor(budget=FAST), func=np.log,
                                           inverse_func=np.exp)
    np.testing.assert_allclose(logarithm.fit(frame, np.exp(mass)).predict(frame), np.exp(mass),
                               rtol=1e-6)
