"""Finding the libraries, the types of the package, its wheel, the README, the notebook."""

import _ctypes
import importlib.util
import os
import pathlib
import re
import shutil
import subprocess
import sys

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
    (str(SAMPLE), "invalid ELF header"), (_ctypes.__file__, "not the library zel"),
    ("", ".so.1 was not found"), ("", "/nowhere/libzel"),
])
@pytest.mark.parametrize("call, variable", [
    ("zelsolver.Project(sys.argv[1])", "ZELSOLVER_LIBRARY"),
    ("zelsolver.evaluate('1')", "ZELSTUDY_LIBRARY"),
])
def test_says_which_library_it_did_not_load_or_where_it_looked(library, text, call, variable):
    printed = run_python(f"""
import sys, zelsolver, zelsolver.loading
zelsolver.loading.candidates = lambda name: ["/nowhere/" + name]
try:
    {call}
except zelsolver.LibraryNotFoundError as error:
    print(error)
""", Plate.path, **{variable: library})
    assert text in printed and variable in printed


def test_finds_an_installed_library(tmp_path):
    (tmp_path / "lib").mkdir()
    installed = tmp_path / "lib" / "libzelsolver.so.1"
    installed.symlink_to(os.environ["ZELSOLVER_LIBRARY"])
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
    shutil.copy(SAMPLE, tmp_path / "zel_tenbar.vrdb")
    monkeypatch.chdir(tmp_path)
    exec(example, {})
    assert re.search(r"\d", capsys.readouterr().out)


def test_types_are_complete(tmp_path):
    if importlib.util.find_spec("mypy") is None:
        pytest.skip("mypy is not installed")
    result = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--cache-dir", tmp_path],
                            cwd=PACKAGE, capture_output=True, text=True, timeout=300)
    assert result.returncode == 0, result.stdout + result.stderr


def test_an_environment_takes_the_package_offline(tmp_path):
    source = tmp_path / "source"  # the build writes beside its sources
    shutil.copytree(PACKAGE, source, ignore=shutil.ignore_patterns("__pycache__", "tests"))
    environment = tmp_path / "environment"
    site = environment / "lib" / f"python3.{sys.version_info.minor}" / "site-packages"

    def run(*command):
        result = subprocess.run(list(map(str, command)), capture_output=True, text=True,
                                timeout=300, env={**os.environ, "PYTHONPATH": ""}, cwd=tmp_path)
        assert result.returncode == 0, result.stdout + result.stderr
        return result.stdout

    run(sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", environment)
    python = environment / "bin" / "python"
    run(python, "-m", "pip", "install", "--no-index", "--no-build-isolation", "--no-deps", source)
    modules = {path.name for path in (PACKAGE / "zelsolver").glob("*.py")}
    assert modules | {"py.typed"} <= {path.name for path in (site / "zelsolver").iterdir()}
    place, mass = run(python, "-c", """
import sys, zelsolver
print(zelsolver.__file__)
with zelsolver.Project(sys.argv[1]) as project:
    print(project.solve(project.reference)["mass"][0])
""", Plate.path).splitlines()
    assert pathlib.Path(place).parent == site / "zelsolver"
    assert float(mass) == pytest.approx(10.5)  # 1 + 2 x - 3 y + 0.5 z at (1, 0, 15)


def test_the_notebook_runs(tmp_path):
    nbformat, nbclient = pytest.importorskip("nbformat"), pytest.importorskip("nbclient")
    pytest.importorskip("ipykernel")
    notebook = nbformat.read(ROOT / "docs" / "tour.ipynb", as_version=4)
    cells = [cell for cell in notebook.cells if cell.cell_type == "code"]
    assert not any(cell.outputs or cell.execution_count for cell in cells)  # as it is kept
    nbclient.NotebookClient(notebook, timeout=120, kernel_name="python3",
                            resources={"metadata": {"path": str(tmp_path)}}).execute()
    kinds = {kind for cell in cells for output in cell.outputs for kind in output.get("data", ())}
    assert {"text/html", "image/png"} <= kinds
