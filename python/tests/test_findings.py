"""What a project tells, samples, expressions, and pictures."""

import html
import math

import numpy as np
import pytest
import zelsolver
from conftest import ROOT, SAMPLE, Plate, truss_designs

matplotlib = pytest.importorskip("matplotlib")
matplotlib.use("agg")
from matplotlib import pyplot

Y = r"<y $\q$>"  # no formula that matplotlib could draw
RANDOM = ROOT / "examples" / "zel_tenbar_random.vrdb"


@pytest.fixture(scope="module")
def trained():
    """y = x with noise of 0.1, and names that HTML and formulas would take for their own."""
    generator = np.random.default_rng(5)
    x = generator.uniform(0, 1, (60, 2))
    y = 2 * x[:, 0] + generator.normal(0, 0.1, 60)
    return zelsolver.train((x, y), ["<i>x</i>", "a$b$"], [Y], {"cost": "1 + 1"}, budget=0.05)


def test_residuals_are_those_of_the_training(trained):
    residuals = trained.residuals()[Y]
    assert len(residuals.measured) == len(residuals.predicted) == 60
    assert sorted(residuals.designs) == list(range(1, 61))
    np.testing.assert_array_equal(residuals.values, residuals.measured - residuals.predicted)
    # The noise, and a standard deviation of its estimate over 60 designs of 10 %.
    assert residuals.rmse == pytest.approx(0.1, rel=0.3)
    explained = 1 - np.sum(residuals.values**2) / np.sum(
        (residuals.measured - residuals.measured.mean())**2)
    assert explained == pytest.approx(trained.cop(Y), abs=0.02)
    chosen, = (c for c in trained.candidates(Y) if c.chosen)
    assert chosen.rmse == pytest.approx(residuals.rmse, rel=0.05) and "<i>x</i>" in chosen.inputs
    with pytest.raises(zelsolver.UnknownNameError):
        trained.candidates("y")


def test_tells_distributions_and_samples_them():
    with zelsolver.Project(RANDOM) as project:
        modulus = project.distributions["modulus"]
        assert modulus.type == "LOGNORMAL"
        mean, deviation = modulus.moments["Mean value"], modulus.moments["Standard deviation"]
        assert (mean, deviation) == (pytest.approx(1e4), pytest.approx(500))
        assert project.correlations["load_outer", "load_inner"] == 0.6
        assert project.units["modulus"] == "ksi"
        described = project.describe()
        assert [i["name"] for i in described["inputs"]] == list(project.inputs)
        points = project.sample(4000, seed=3)
        assert points.names == project.inputs and points.array.shape[0] == 4000
        # Four standard errors, some less for the Latin hypercube; 0.6 is of normal variables.
        assert points["modulus"].mean() == pytest.approx(mean, abs=4 * deviation / 4000**0.5)
        loads = np.corrcoef(points["load_outer"], points["load_inner"])[0, 1]
        assert loads == pytest.approx(0.6, abs=0.05)
        np.testing.assert_array_equal(project.sample(9, seed=3), project.sample(9, seed=3))
        for options, text in (({"scheme": "magic"}, "magic"), ({"n": -1}, "n"),
                              ({"seed": -1}, "seed")):
            with pytest.raises(zelsolver.InputError, match=text):
                project.sample(**{"n": 5, **options})


def test_samples_without_a_project():
    points = zelsolver.sample({"x:1": (-1, 1), "k": [3, 5], "steel": {"S355", "S235"}}, 40,
                              scheme="sobol", seed=2)
    assert points.array.shape == (40, 3)
    # A Sobol' sequence of 40 has 5 in each eighth.
    counts, _ = np.histogram(points["x:1"], np.linspace(-1, 1, 9))
    assert counts.min() >= 4 and set(points["k"]) == {3, 5} and set(points["steel"]) == {0, 1}
    for inputs, text in (({"x": (1, 2, 3)}, "expected"), ({"x": 1.0}, '"x": 1.0 is neither'),
                         ({"x": (0, "b")}, "'b' is not a real number"), ({"x": (2, 1)}, "x")):
        with pytest.raises(zelsolver.InputError, match=text):
            zelsolver.sample(inputs, 4)


@pytest.mark.parametrize("expression, values, expected", [
    ("1 + 2*a", {"a": 3}, 7.0), ("a <= 25", {"a": np.float32(3)}, True), ("a", {"a": True}, True),
    ("2*v", {"v": [1.0, 2.0]}, [2.0, 4.0]), ("m", {"m": np.eye(2)}, np.eye(2)),
    ("max(abs(s)) + b", {"s": (1, -4), "b": "2*3"}, 10.0), ("sqrt(0-4)", {}, 2j),
])
def test_evaluates_expressions(expression, values, expected):
    value = zelsolver.evaluate(expression, **values)
    np.testing.assert_allclose(value, expected, rtol=1e-15)
    assert np.shape(value) == np.shape(expected)
    assert not isinstance(expected, bool) or value is expected


def test_refuses_what_cannot_be_evaluated():
    for expression, values, text in (("1 +", {}, "parsing"), ("nobody + 1", {}, "nobody"),
                                     ("\0", {}, "NUL"), ("a", {"a": 1j}, '"a": 1j is no number'),
                                     ("a", {"a": [[1], [2, 3]]}, "is no number"),
                                     ("a", {"a": math.nan}, '"a": nan is not finite')):
        with pytest.raises(zelsolver.InputError, match=text):
            zelsolver.evaluate(expression, **values)


def test_notebooks_show_names_as_they_are(trained):
    page = trained._repr_html_()
    solution = trained.solve(trained.sample(30).array)
    for text in (page, solution._repr_html_()):
        assert Y not in text and html.escape(Y) in text
    assert "<i>" not in page and "cost" in page and html.escape("a$b$") in page
    assert "20 more" in solution._repr_html_()
    assert f"<td>{solution[Y][0]:.6g}</td>" in solution._repr_html_()


@pytest.fixture
def figure():
    figure = pyplot.figure()
    yield figure
    figure.canvas.draw()  # every text can be drawn
    pyplot.close("all")


def test_pictures_show_the_residuals(trained, figure):
    residuals = trained.residuals()[Y]
    ax = trained.plot.predicted(Y, figure.add_subplot())
    np.testing.assert_array_equal(ax.lines[-1].get_xydata(),
                                  np.column_stack([residuals.measured, residuals.predicted]))
    band = ax.collections[0].get_paths()[0].vertices  # from the lower edge to the upper
    x, y = band[:, 0], band[:, 1]
    np.testing.assert_allclose(np.abs(y - x).max(), 1.96 * residuals.rmse)
    ax = trained.plot.residuals(Y, figure.add_subplot())
    np.testing.assert_array_equal(ax.lines[-1].get_ydata(), residuals.values)


def test_pictures_show_the_models(truss, figure):
    area = truss.inputs[0]
    ax = truss.plot.slice("displacement", area, at={"area_3": 9.0}, n=31, ax=figure.add_subplot())
    x, y = ax.lines[0].get_data()
    designs = {**truss.reference, "area_3": 9.0, area: x}
    np.testing.assert_array_equal(y, truss.solve(designs)["displacement"])
    assert (x[0], x[-1]) == truss.bounds[area] and ax.get_xlabel() == "area_1 [in^2]"
    upper = ax.collections[0].get_paths()[0].get_extents().y1
    assert upper == pytest.approx((y + 1.96 * truss.errors(designs, "displacement").rmse).max())
    assert not truss.plot.slice("stress[8]", area).collections  # knows no errors

    surface = truss.plot.map("cost", area, "area_3", n=5)
    assert (surface.get_xlabel(), surface.get_ylabel()) == ("area_1 [in^2]", "area_3 [in^2]")
    assert surface.get_xlim() == truss.bounds[area]

    image = truss.plot.cops().images[0].get_array()
    assert image.shape == (12, 11) and image[0, 10] == truss.cop("mass")
    assert image[0, 2] == truss.single_cops("mass")["area_3"]

    many = truss.plot.parallel(truss_designs(20), "cost", ["mass", area]).collections[0]
    np.testing.assert_array_equal(many.get_array(), truss.solve(truss_designs(20))["cost"])
    assert len(many.get_segments()) == 20
    assert many.get_segments()[0].min() >= 0 and many.get_segments()[0][:, 1].max() <= 1


def test_pictures_refuse_unknown_names(truss):
    plot = truss.plot
    for call in (lambda: plot.predicted("x"), lambda: plot.slice("x", "area_1"),
                 lambda: plot.slice("mass", "x"), lambda: plot.map("mass", "area_1", "x"),
                 lambda: plot.slice("mass", "area_1", at={"x": 1}),
                 lambda: plot.parallel(color="x")):
        with pytest.raises(zelsolver.UnknownNameError, match='"x"'):
            call()
    with pytest.raises(zelsolver.InputError, match="two inputs"):
        plot.map("mass", "area_1", "area_1")
