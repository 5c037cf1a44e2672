"""Opening, closing, and what a project holds."""

import copy
import math
import os
import pathlib
import pickle
import shutil
import subprocess

import numpy as np
import pytest
import zelsolver
from conftest import PROJECTS, SAMPLE, ZEL, Plate, assert_plate


def test_tells_what_the_project_holds(plate):
    assert plate.inputs == Plate.inputs
    assert plate.responses == Plate.responses
    assert plate.criteria == ("goal", "limit")
    assert dict(plate.bounds) == {"x": (0, 2), "y": (-1, 1), "Größe": (10, 20)}
    assert dict(plate.reference) == {"x": 1, "y": 0, "Größe": 15}
    assert "plate.vrdb" in repr(plate) and "3 inputs" in repr(plate)
    assert plate.cop("mass") == 0.9
    flat = plate.single_cops("flat")
    assert flat["x"] == 0.9 and math.isnan(flat["y"]) and math.isnan(flat["Größe"])
    assert plate.used_inputs("flat") == ("x",)
    assert plate.used_inputs("mass") == Plate.inputs
    # Of parameters that are no inputs, too.
    assert plate.parameter_bounds("sum") == (-1, 3)  # x + y
    assert plate.reference_value("thickness") == 3
    with pytest.raises(zelsolver.UnknownNameError, match=r"^No Limits for Parameter \(thi"):
        plate.parameter_bounds("thickness")  # a constant


@pytest.mark.parametrize("name", ["weight", "", "x\0", 7, None])
def test_refuses_unknown_names(plate, name):
    for ask in (plate.cop, plate.single_cops, plate.used_inputs, plate.candidates,
                plate.reference_value, plate.parameter_bounds):
        with pytest.raises(zelsolver.UnknownNameError) as caught:
            ask(name)
        assert str(name) in str(caught.value) or repr(name) in str(caught.value)
    with pytest.raises(zelsolver.UnknownNameError, match='"weight"; there are "mass", "flat", "st'):
        plate.cop("weight")


def test_closes(plate):
    solution, bounds = plate.solve(Plate.designs(3)), plate.bounds
    plate.close()
    plate.close()
    assert plate.closed and "closed" in repr(plate)
    assert_plate(solution, Plate.designs(3))  # the results live on, as do names
    assert plate.bounds is bounds and plate.inputs == Plate.inputs
    for call in (lambda: plate.solve(Plate.designs(3)), lambda: plate.solve(np.empty((0, 3))),
                 lambda: plate.cop("mass"), lambda: plate.errors(Plate.designs(3)),
                 lambda: plate.reference, plate.describe, plate.to_bytes):
        with pytest.raises(zelsolver.ClosedError, match="plate.vrdb: the project is closed"):
            call()


def test_takes_any_kind_of_path_and_survives_a_change_of_directory(monkeypatch, tmp_path):
    name = "Träger 梁.vrdb"
    shutil.copy(Plate.path, tmp_path / name)
    monkeypatch.chdir(tmp_path)
    for path in (name, tmp_path / name, os.fsencode(name)):
        with zelsolver.Project(path) as project:
            monkeypatch.chdir("/")
            zelsolver.Project(Plate.path).close()
            assert project.path == str(tmp_path / name)
            assert_plate(project.solve(Plate.designs(2)), Plate.designs(2))
            monkeypatch.chdir(tmp_path)


def test_travels_without_its_file(tmp_path):
    path = pathlib.Path(shutil.copy(Plate.path, tmp_path / "plate.vrdb"))
    original = zelsolver.Project(path, zelsolver.file_hash(path))
    pickled, contents = pickle.dumps(original), original.to_bytes()
    assert contents == Plate.path.read_bytes()
    twins = [copy.copy(original), pickle.loads(pickled), zelsolver.Project.from_bytes(contents)]
    original.close()
    path.unlink()
    twins.append(pickle.loads(pickle.dumps(twins[1])))
    for twin in twins:
        assert twin.path is None and "in memory" in repr(twin)
        assert twin.to_bytes() == contents
        assert_plate(twin.solve(Plate.designs(2)), Plate.designs(2))
    assert twins[1].hash == original.hash
    twins[0].save(path)
    assert path.read_bytes() == contents
    with pytest.raises(zelsolver.InputError, match="/no/such/folder"):
        twins[0].save("/no/such/folder/study.vrdb")
    with pytest.raises(zelsolver.SignatureError):
        zelsolver.Project.from_bytes(contents, hash="0" * 128)
    with pytest.raises(zelsolver.ProjectError, match="^the project in memory: "):
        zelsolver.Project.from_bytes(contents[:999])


def test_checks_the_hash():
    hash = zelsolver.file_hash(SAMPLE)
    assert hash == subprocess.run([ZEL, "hash", SAMPLE], capture_output=True, text=True,
                                  check=True).stdout.split()[0]
    text = "File seems to be corrupt. Signature is invalid or missing"
    for wrong in ("", "0" * 128, hash.upper(), "\ud800"):
        with pytest.raises(zelsolver.SignatureError, match=text):
            zelsolver.Project(SAMPLE, hash=wrong)
    with zelsolver.Project(SAMPLE, hash=hash) as signed:
        assert signed.hash == hash
        x = [[12.0] * 10]
        with zelsolver.Project(SAMPLE) as unsigned:  # both at once, in either order
            with zelsolver.Project(SAMPLE, hash) as again:
                results = [p.solve(x)["mass"][0] for p in (signed, unsigned, again)]
        with pytest.raises(zelsolver.SignatureError):
            zelsolver.Project(SAMPLE, hash="0" * 128)
        assert signed.solve(x)["mass"][0] == results[0] == results[1] == results[2]


def test_each_project_is_the_file_as_it_stood_when_opened(tmp_path):
    path = tmp_path / "study.vrdb"
    shutil.copy(Plate.path, path)
    with zelsolver.Project(path) as before:
        shutil.copy(PROJECTS / "one_response.vrdb", path)
        with zelsolver.Project(path) as after:
            assert after.responses == ("flat",)
            assert before.solve(Plate.designs(2)).responses.array.shape == (2, 5)
        for ask in (before.to_bytes, lambda: pickle.dumps(before)):  # its bytes are gone
            with pytest.raises(zelsolver.ProjectError, match="was changed since it was opened"):
                ask()
        path.unlink()
        with pytest.raises(zelsolver.ProjectError, match="No such file"):
            before.to_bytes()
        # Many others come and go meanwhile.
        for i in range(20):
            shutil.copy(Plate.path, tmp_path / f"{i}.vrdb")
            zelsolver.Project(tmp_path / f"{i}.vrdb").close()
        assert_plate(before.solve(Plate.designs(2)), Plate.designs(2))


def test_refuses_what_is_no_project(tmp_path):
    whole = Plate.path.read_bytes()
    (tmp_path / "empty").write_bytes(b"")
    (tmp_path / "cut").write_bytes(whole[:len(whole) // 2])
    (tmp_path / "folder").mkdir()
    for path in [*tmp_path.iterdir(), PROJECTS / "no_models.vrdb"]:
        with pytest.raises(zelsolver.ProjectError) as caught:
            zelsolver.Project(path)
        assert str(caught.value).startswith(f"{path}: ") and caught.value.status == 2, path
    # The next attempt reads the file again.
    (tmp_path / "empty").write_bytes(whole)
    zelsolver.Project(tmp_path / "empty").close()


def test_refuses_paths_without_a_file():
    with pytest.raises(zelsolver.ProjectNotFoundError) as caught:
        zelsolver.Project("/no/such/file")
    assert isinstance(caught.value, FileNotFoundError)
    assert str(caught.value) == "/no/such/file: No such file or directory"
    for path in ("a" * 300, "nul\0.vrdb", b"\xff\xfe.vrdb", f"{Plate.path}/x"):
        with pytest.raises(zelsolver.ProjectError):
            zelsolver.Project(path)
