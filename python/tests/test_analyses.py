"""Analyses, exports and reports of a project, against closed forms and the package's own
predictions."""

import numpy as np
import pytest

import zelsolver


@pytest.fixture(scope="module")
def plane():
    """y = 3a + b on [0, 1]^2, which a polynomial has exactly; limit y <= 2."""
    x = np.random.default_rng(1).random((40, 2))
    x[:4] = [[0, 0], [0, 1], [1, 0], [1, 1]]
    return zelsolver.train({"a": x[:, 0], "b": x[:, 1], "y": 3 * x[:, 0] + x[:, 1]},
                           ["a", "b"], ["y"], criteria={"limit": "y <= 2"}, progress=False)


def test_analyses_find_the_closed_forms(plane):
    first = plane.sensitivity(n=4096)["quantities"]["y"]["first"]
    assert first["a"] == pytest.approx(0.9, abs=0.02)  # of the variance 9/12 + 1/12
    scatter = plane.propagate(distributions=["a:normal(0.5, 0.1)", "b:normal(0.5, 0.1)"])
    assert scatter["quantities"]["y"]["sd"] == pytest.approx(np.sqrt(0.1), rel=0.02)
    assert scatter["limits"]["limit"]["probability"] == pytest.approx(0.5, abs=0.02)
    best = plane.optimize(maximize="y")
    assert best["status"] == "optimal"
    assert best["quantities"]["y"] == pytest.approx(2.0, abs=1e-6)
    assert plane.predict(best["inputs"])["y"] == pytest.approx(best["quantities"]["y"], abs=1e-9)


def test_exports_and_reports_hold_the_models(plane, tmp_path):
    names = {}
    exec(plane.export("python")["text"], names)  # predicts with numpy alone
    x = np.random.default_rng(2).random((5, 2))
    assert np.ravel(names["predict"](x)) == pytest.approx(plane.predict(x)["y"], abs=1e-10)
    page = tmp_path / "page.html"
    assert plane.report(page)["out"] == str(page)
    assert page.read_text().startswith("<!")


def test_analyses_refuse_with_the_callers_names_and_end_when_told(plane, tmp_path):
    for call, text in [(lambda: plane.optimize("mass"), "mass"),
                       (lambda: plane.optimize(5), "minimize"),
                       (lambda: plane.sensitivity(rows=3), "rows"),
                       (lambda: plane.propagate(distributions="a:normal(1"), "normal(1"),
                       (lambda: plane.export("fortran"), "fortran"),
                       (lambda: plane.report(tmp_path / "no" / "page.html"), "page.html")]:
        with pytest.raises(zelsolver.InputError, match=text.replace("(", r"\(")):
            call()

    def stop(share, text):
        raise EOFError

    with pytest.raises(EOFError):
        plane.sensitivity(progress=stop)
