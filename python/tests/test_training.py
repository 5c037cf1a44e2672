"""Training from what Python holds, against the program zel, and how it ends."""

import json
import os
import signal
import subprocess
import sys

import numpy as np
import pandas
import pytest
import zelsolver
from conftest import ZEL

FAST = 0.05  # seconds of training
INPUTS, RESPONSES = ["Länge", "b", "steel"], ["mass", "y"]


@pytest.fixture(scope="module")
def frame():
    generator = np.random.default_rng(4)
    points = generator.uniform(1, 2, (48, 2))
    steel = generator.choice(["S235", "S355"], 48)
    return pandas.DataFrame({
        "Länge": points[:, 0], "b": points[:, 1], "steel": steel, "note": "text",
        "mass": 3 * points[:, 0] + points[:, 1],
        "y": points[:, 0] * points[:, 1] + (steel == "S355")
    })


def test_trains_the_models_of_the_program_zel(frame, tmp_path):
    frame.to_csv(tmp_path / "t.csv", index=False)
    printed = json.loads(subprocess.run(
        [ZEL, "train", tmp_path / "t.csv", "--inputs", "Länge,b,steel", "--responses", "mass,y",
         "--criterion", "limit: mass <= 9", "--seed", "7", "--budget", str(FAST), "--json"],
        capture_output=True, text=True, check=True).stdout)
    project = zelsolver.train(frame, INPUTS, RESPONSES, {"limit": "mass <= 9"}, seed=7, budget=FAST)
    assert (project.inputs, project.responses) == (tuple(INPUTS), tuple(RESPONSES))
    assert project.criteria == ("limit",) and len(project.notes) == len(printed["notes"])
    assert '"steel": words' in project.notes[0]
    for entry in printed["responses"]:
        assert project.cop(entry["name"]) == pytest.approx(entry["cop"], rel=1e-12)
        assert [c.chosen for c in project.candidates(entry["name"])] == [
            c["chosen"] for c in entry["candidates"]]
    project.save(tmp_path / "copy.vrdb")
    with zelsolver.Project(tmp_path / "copy.vrdb") as saved, zelsolver.Project(
            tmp_path / "t.vrdb") as other:
        values = [p.solve(frame[:9]).to_frame() for p in (project, saved, other)]
    assert values[0].equals(values[1]) and values[0].equals(values[2])
    np.testing.assert_allclose(values[0][RESPONSES], frame[RESPONSES][:9], atol=1e-6)
    with pytest.raises(zelsolver.InputError, match='is none of its words "S235", "S355"'):
        project.solve(frame[:9].assign(steel="S420"))


@pytest.mark.parametrize("form", [
    lambda f: f.to_dict("list"), lambda f: f.to_records(),
    lambda f: f[["Länge", "b", "mass"]].to_numpy(),
    lambda f: (f[["Länge", "b"]].to_numpy().tolist(), f["mass"]),
    lambda f: f.astype({"b": object, "mass": "Float64", "steel": "category"}),
    lambda f: f.assign(complex=1j),  # nobody asks for it
])
def test_accepts_every_form_of_the_same_designs(frame, form):
    designs = frame[["Länge", "b"]].to_numpy()
    project = zelsolver.train(form(frame), np.array(["Länge", "b"]), "mass", seed=np.int64(1),
                              budget=np.float32(FAST))
    np.testing.assert_allclose(project.predict(designs)["mass"], frame["mass"], atol=1e-9)


def test_missing_responses_and_dates(frame):
    start = np.datetime64("2024-01-31T12:00")
    day = np.arange(48.0)
    dated = frame.assign(day=start + (day * 86400).astype("m8[s]"), w=day / 10)
    dated.loc[3, "w"] = None
    project = zelsolver.train(dated, ["da*", "b"], "w", budget=FAST)
    assert len(project.residuals()["w"].measured) == 47
    assert project.bounds["day"].lower == 19753.5  # noon of 2024-01-31
    assert project.predict({"day": 19753.5 + 3, "b": 1.5})["w"] == pytest.approx(0.3, abs=1e-6)
    for days in (dated["day"], list(dated["day"]), dated["day"].dt.strftime("%Y-%m-%dT%H:%M")):
        predicted = project.predict({"day": days, "b": dated["b"]})["w"]
        np.testing.assert_allclose(predicted, day / 10, atol=1e-6)
    with pytest.raises(zelsolver.InputError, match='column "day", of dates'):
        project.predict({"day": "noon", "b": 1.5})


@pytest.mark.parametrize("change, text", [
    (dict(inputs=["Länge", "Tiefe"]), "Tiefe"), (dict(responses=["Länge"]), "Länge"),
    (dict(criteria=["limit: mass <"]), "limit"), (dict(budget=-1), "budget"),
    (dict(seed="one"), "seed"), (dict(seed=1j), "seed: 1j is no"),
    (dict(budget=np.nan), "nan is no"), (dict(discrete=["mass"]), "mass"),
    (dict(inputs=3), "inputs: 3"),
    (dict(frame=np.ones((9, 2))), "the designs have the shape (9, 2): expected (n, 3)"),
    (dict(frame=(np.ones((9, 2)), np.ones((9, 2)))), "the responses have the shape (9, 2)"),
    (dict(frame=(1, 2, 3)), "expected (X, Y)"), (dict(frame=3.0), "shape ()"),
    (dict(frame={"Länge": [1, 2], "b": [1], "mass": [1, 2]}), '"Länge" has 2'),
    (dict(frame={"Länge": [1j], "b": [1], "mass": [1]}), 'column "Länge": complex128 is neither'),
    (dict(frame={"Länge": [[1]], "b": [1], "mass": [1]}), "shape (1, 1): expected (n,)"),
    (dict(frame=pandas.DataFrame(np.ones((5, 3)), columns=["b", "b", "mass"])), 'columns "b"'),
    (dict(frame={"Länge": [1.0, 2, 3], "b": [1, 2, 1], "mass": [1, 2, 3]}), "at least 4"),
])
def test_refuses_with_the_callers_names(frame, change, text):
    arguments = dict(frame=frame, inputs=["Länge", "b"], responses="mass", budget=FAST)
    with pytest.raises(zelsolver.InputError) as caught:
        zelsolver.train(**{**arguments, **change})
    assert text in str(caught.value)


def test_progress_is_told_and_may_end_the_training(frame):
    told = []
    zelsolver.train(frame, INPUTS, RESPONSES, budget=3,  # long enough to tell of both responses
                    progress=lambda *now: told.append(now))
    shares = [share for share, _ in told if share >= 0]
    assert len(shares) > 1 and shares == sorted(shares) and 0 <= shares[-1] <= 1
    assert any("mass" in text for _, text in told)
    many = pandas.concat([frame] * 20, ignore_index=True)  # seconds: there is something to end
    many["b"] += np.random.default_rng(1).uniform(0, 1, len(many))
    for last in (1, 3):
        rest = iter(range(last))
        with pytest.raises(StopIteration):
            zelsolver.train(many, INPUTS, RESPONSES, progress=lambda *now: next(rest))


def test_ctrl_c_ends_the_training(frame):
    with pytest.raises(KeyboardInterrupt):
        zelsolver.train(frame, INPUTS, RESPONSES, budget=100,
                        progress=lambda *_: os.kill(os.getpid(), signal.SIGINT))
    assert signal.getsignal(signal.SIGINT) is signal.default_int_handler
    noted = []
    signal.signal(signal.SIGINT, lambda *_: noted.append(1))  # one that only takes note
    try:
        zelsolver.train(frame, INPUTS, RESPONSES, budget=FAST,
                        progress=lambda *_: noted or os.kill(os.getpid(), signal.SIGINT))
    finally:
        signal.signal(signal.SIGINT, signal.default_int_handler)
    assert noted == [1]


def test_bars_show_what_is_in_work(capsys, monkeypatch):
    for with_tqdm in (True, False):
        if not with_tqdm:
            monkeypatch.setitem(sys.modules, "tqdm.auto", None)
        with zelsolver.progress.listener(True) as hear:
            hear(-1, "reading")
            hear(0.5, "kriging of mass")
        assert "kriging of mass" in capsys.readouterr().err
    with zelsolver.progress.listener(None) as hear:
        assert hear is None  # nobody sees it
