"""Finding the library, the types of the package, its wheel, and the README."""

import _ctypes
import pathlib
import re
import shutil
import subprocess
import sys
import zipfile

import pytest
import zelsolver
from conftest import ROOT, SAMPLE, Plate, run_python

PACKAGE = ROOT / "python"


def test_versions_agree():
    declared = re.search(r'^version = "(.+)"$', (PACKAGE / "pyproject.toml").read_text(), re.M)[1]
    assert zelsolver.__version__ == declared
    assert zelsolver.library_version().startswith(declared)


@pytest.mark.parametrize("library, text", [
    ("/no/such/library.so", "cannot open shared object file"),
    (str(SAMPLE), "invalid ELF header"),
    (_ctypes.__file__, "not the library zelsolver"),
    ("", "libzelsolver.so.1 was not found"), ("", "/nowhere/libzelsolver.so.1"),
])
def test_says_which_library_it_did_not_load_or_where_it_looked(library, text):
    printed = run_python("""
import sys, zelsolver, zelsolver.loading
zelsolver.loading.candidates = lambda name: ["/nowhere/" + name]
try:
    zelsolver.Project(sys.argv[1])
except zelsolver.LibraryNotFoundError as error:
    print(error)
""", Plate.path, ZELSOLVER_LIBRARY=library)
    assert text in printed and "ZELSOLVER_LIBRARY" in printed


def test_finds_an_installed_library(tmp_path):
    (tmp_path / "lib").mkdir()
    installed = tmp_path / "lib" / "libzelsolver.so.1"
    installed.symlink_to(zelsolver.library.get_library().path)
    printed = run_python("""
import sys
sys.prefix = sys.argv[1]
import zelsolver.library, zelsolver.loading
everywhere = zelsolver.loading.candidates
assert everywhere("x.so")[0] == "x.so"  # where the system looks comes first
zelsolver.loading.candidates = lambda name: everywhere(name)[1:]
print(zelsolver.library.get_library().path)
""", tmp_path, ZELSOLVER_LIBRARY="")
    assert printed.strip() == str(installed)


def test_the_first_example_of_the_readme_runs(tmp_path, monkeypatch, capsys):
    example = re.search(r"```python\n(.*?)```", (PACKAGE / "README.md").read_text(), re.S)[1]
    assert len(example.strip().splitlines()) <= 5
    shutil.copy(SAMPLE, tmp_path / "zel_tenbar.vrdb")
    monkeypatch.chdir(tmp_path)
    exec(example, {})
    assert re.search(r"\d", capsys.readouterr().out)


def test_the_wheel_installs_and_works(tmp_path):
    source = tmp_path / "source"  # the build writes beside its sources
    shutil.copytree(PACKAGE, source, ignore=shutil.ignore_patterns("__pycache__", "tests"))

    def pip(*arguments):
        result = subprocess.run([sys.executable, "-m", "pip", "--no-input",
                                 "--disable-pip-version-check", *map(str, arguments)],
                                capture_output=True, text=True, timeout=300)
        assert result.returncode == 0, result.stdout + result.stderr

    pip("wheel", "--no-index", "--no-build-isolation", "--no-deps", "-w", tmp_path, source)
    wheel, = tmp_path.glob("*.whl")
    assert wheel.name == f"zelsolver-{zelsolver.__version__}-py3-none-any.whl"
    names = zipfile.ZipFile(wheel).namelist()
    modules = {f"zelsolver/{path.name}" for path in (PACKAGE / "zelsolver").glob("*.py")}
    assert modules | {"zelsolver/py.typed"} == {n for n in names if n.startswith("zelsolver/")}

    pip("install", "--no-index", "--no-deps", "--target", tmp_path / "site", wheel)
    printed = run_python("""
import sys, zelsolver
print(zelsolver.__file__)
with zelsolver.Project(sys.argv[1]) as project:
    print(project.solve(project.reference)["mass"][0])
""", Plate.path, PYTHONPATH=str(tmp_path / "site"))
    place, mass = printed.splitlines()
    assert pathlib.Path(place).is_relative_to(tmp_path / "site")
    assert float(mass) == pytest.approx(10.5)  # 1 + 2 x - 3 y + 0.5 z at (1, 0, 15)
