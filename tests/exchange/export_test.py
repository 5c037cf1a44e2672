"""zel export: what it writes is compiled and imported, and must predict as the library does.

Runs as   export_test.py ZEL EXAMPLES PROJECTS
"""
import csv
import ctypes
import importlib.util
import io
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import numpy as np

ZEL, EXAMPLES, PROJECTS = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
HOSTILE, MISSING = PROJECTS / "hostile.vrdb", PROJECTS / "missing.vrdb"
SINGLE = PROJECTS / "single.vrdb"
STUDIES = [EXAMPLES / "zel_tenbar.vrdb", EXAMPLES / "zel_tenbar_random.vrdb", HOSTILE, SINGLE,
           PROJECTS / "singular.vrdb"]
FLAGS = "-std=c99 -pedantic -Wall -Wextra -Werror -ffreestanding -O2".split()
NUM_DESIGNS = 200
LEFT_OUT = ["loop", "pool", "truth", "macro", "unknown", "reads", "vector"]


def run(*arguments, **options):
    return subprocess.run([str(a) for a in arguments], capture_output=True, timeout=300, **options)


def library(project, names, x, *options):
    """Columns of zel solve by name."""
    text = io.StringIO(newline="")
    csv.writer(text).writerows([names, *([repr(float(v)) for v in row] for row in x)])
    result = run(ZEL, "solve", project, "--in", "-", "--extrapolate", "--quiet", *options,
                 input=text.getvalue().encode())
    assert result.returncode == 0, result.stderr
    rows = list(csv.reader(io.StringIO(result.stdout.decode(), newline="")))
    return dict(zip(rows[0], np.array(rows[1:], dtype=float).T))


class Study:
    """A project with its exports, and what the library says at some designs, some far outside."""

    def __init__(self, project, folder):
        self.c, self.python = folder / "study.c", folder / "study.py"
        for format, path in (("c", self.c), ("python", self.python)):
            result = run(ZEL, "export", project, "--format", format, "-o", path)
            assert result.returncode == 0, result.stderr
        self.warnings = result.stderr.decode()
        self.model = json.loads(run(ZEL, "export", project, "--quiet").stdout)
        self.names = [entry["name"] for entry in self.model["inputs"]]
        lower = np.array([entry["lower"] for entry in self.model["inputs"]])
        upper = np.array([entry["upper"] for entry in self.model["inputs"]])
        share = np.random.default_rng(1).random((NUM_DESIGNS, len(self.names)))
        share[:5] = 3.0 * share[:5] - 1.0
        share[0] = 2.0
        self.x = lower + share * (upper - lower)
        self.x[5, 0] = np.nan
        self.outputs = [entry["name"] for entry in self.model["responses"]]
        self.criteria = [entry["name"] for entry in self.model["criteria"]]
        # The last response with gradients: the library has none of splines.
        self.slope = [k for k, entry in enumerate(self.model["responses"])
                      if entry["model"]["family"] != "thin plate splines"][-1]
        self.identifier = self.outputs[self.slope].replace("[", "_").replace("]", "")
        self.values = library(project, self.names, self.x, "--criteria", "--gradients",
                              self.outputs[self.slope])

    def spread(self, name):
        """The range at the designs inside; of values that are all equal a share of them."""
        values = self.values[name][6:]
        values = values[np.isfinite(values)]
        return max(np.ptp(values), 1e-3 * np.abs(values).max()) if len(values) else 0.0

    def tolerance(self, name):
        if name not in self.outputs:
            return 1e-11 * self.spread(name)  # of several responses, and differences of them
        model = self.model["responses"][self.outputs.index(name)]["model"]
        # Weights of a kriging may nearly cancel, normal equations of local fits be nearly singular:
        # exports repeat both to the bit. Powers are those of the C library or of numpy.
        exact = (model["family"] in ("kriging", "moving least squares") and
                 model.get("power", 1) == 1 and all(step.get("k", 1) == 1 for step in model["back"]))
        return 0.0 if exact else 1e-12 * self.spread(name)

    def check(self, test, name, values, tolerance=None):
        tolerance = self.tolerance(name) if tolerance is None else tolerance
        expected = self.values[name]
        test.assertEqual(np.isnan(values).tolist(), np.isnan(expected).tolist(), name)
        inside = np.isfinite(expected)
        if tolerance > 0.0:
            inside[:5] = False  # far outside, numbers may be of any size
        if inside.any():
            difference = np.abs(values - expected)[inside].max()
            test.assertLessEqual(difference, tolerance, name)


class CStudy:
    """The functions of a compiled file."""

    def __init__(self, study, library_path):
        self.study, self.library = study, ctypes.CDLL(str(library_path))

    def call(self, function, *arrays, size):
        result = (ctypes.c_double * size)()
        getattr(self.library, "study_" + function)(
            *((ctypes.c_double * len(a))(*a) for a in arrays), result)
        return list(result)

    def number(self, function, *arrays):
        call = getattr(self.library, "study_" + function)
        call.restype = ctypes.c_double
        return call(*((ctypes.c_double * len(a))(*a) for a in arrays))

    def texts(self, table):
        n = len(getattr(self.study, {"input": "names", "output": "outputs"}[table]))
        return [t.decode() for t in (ctypes.c_char_p * n).in_dll(
            self.library, f"study_{table}_names")]


class ExportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.studies = []
        for i, project in enumerate(STUDIES):
            path = pathlib.Path(cls.folder.name, str(i))
            path.mkdir()
            cls.studies.append(Study(project, path))

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def compare(self, study, values, criteria, gradient):
        for names, columns in ((study.outputs, values), (study.criteria, criteria)):
            for name, column in zip(names, columns.T):
                study.check(self, name, column)
        name = study.outputs[study.slope]
        for j, step in enumerate(study.model["responses"][study.slope]["gradient_steps"]):
            # A difference of two predictions over two steps.
            tolerance = study.tolerance(name) / step if step else 0.0
            study.check(self, f"{name}:d/d {study.names[j]}", gradient[:, j], tolerance)

    def test_c_predicts_as_the_library_under_every_compiler(self):
        compilers = [c for c in ("gcc", "clang", "tcc") if shutil.which(c)]
        self.assertTrue(compilers)
        for study in self.studies:
            for compiler in compilers:
                with self.subTest(study=str(study.c), compiler=compiler):
                    path = study.c.with_suffix(f".{compiler}.so")
                    built = run(compiler, *FLAGS, "-fPIC", "-shared", study.c, "-o", path, "-lm")
                    self.assertEqual((built.returncode, built.stderr), (0, b""))
                    c = CStudy(study, path)
                    size = len(study.outputs)
                    values = np.array([c.call("predict", x, size=size) for x in study.x])
                    criteria = np.array([c.call("criteria", x, v, size=len(study.criteria))
                                         for x, v in zip(study.x, values) if study.criteria])
                    identifier = study.identifier
                    gradient = np.array([c.call("gradient_" + identifier, x,
                                                size=len(study.names)) for x in study.x])
                    self.compare(study, values, criteria, gradient)
                    self.assertEqual(c.number("predict_" + identifier, study.x[6]),
                                     values[6, study.slope])
                    self.assertEqual(c.texts("input"), study.names)
                    self.assertEqual(c.texts("output"), study.outputs)
                    in_range = c.library.study_in_range
                    self.assertEqual([in_range((ctypes.c_double * len(x))(*x))
                                      for x in (study.x[0], study.x[6])], [0, 1])

    def test_c_predicts_on_a_32_bit_target(self):
        study = self.studies[2]
        main = study.c.with_name("main.c")
        main.write_text("#define STUDY_DECLARATIONS\n#include \"study.c\"\n#include <stdio.h>\n"
                        "int main(void) { double x[STUDY_NUM_INPUTS], y[STUDY_NUM_OUTPUTS]; int i;\n"
                        "while (scanf(\"%lf %lf %lf\", x, x + 1, x + 2) == 3) { study_predict(x, y);\n"
                        "for (i = 0; i < STUDY_NUM_OUTPUTS; ++i) printf(\"%.17g \", y[i]); }\n"
                        "return sizeof(void *) != 4; }\n")
        program = main.with_suffix("")
        # Extended precision would round otherwise than the library.
        built = run("gcc", "-m32", "-msse2", "-mfpmath=sse", *FLAGS[:-2], "-O2", main, study.c,
                    "-o", program, "-lm")
        if b"cannot find" in built.stderr or b"No such file" in built.stderr:
            self.skipTest("no 32-bit C library")
        self.assertEqual(built.returncode, 0, built.stderr)
        text = "\n".join(" ".join(repr(float(v)) for v in x) for x in study.x)
        result = run(program, input=text.encode())
        self.assertEqual(result.returncode, 0)
        values = np.array(result.stdout.split(), dtype=float).reshape(NUM_DESIGNS, -1)
        for k, name in enumerate(study.outputs):
            study.check(self, name, values[:, k])

    def test_python_predicts_as_the_library(self):
        for study in self.studies:
            with self.subTest(study=str(study.python)):
                found = importlib.util.spec_from_file_location("study", study.python)
                module = importlib.util.module_from_spec(found)
                found.loader.exec_module(module)
                gradient = getattr(module, "gradient_" + study.identifier)
                criteria = module.criteria(study.x) if study.criteria else np.array([])
                self.compare(study, module.predict(study.x), criteria, gradient(study.x))
                self.assertEqual(list(module.INPUTS), study.names)
                self.assertEqual(list(module.OUTPUTS), study.outputs)
                np.testing.assert_array_equal(module.predict(study.x[6]),
                                              module.predict(study.x)[6])
                with self.assertRaisesRegex(ValueError, "inputs of shape"):
                    module.predict([[1.0] * 7])

    def test_names_become_identifiers_without_clashes(self):
        declared = [word[len("double study_predict_"):word.index("(")]
                    for word in self.studies[2].c.read_text().splitlines()
                    if word.startswith("double study_predict_") and word.endswith(";")]
        self.assertEqual(declared, ["mass", "class", "class_2", "class_3", "class_4", "a_b", "a_b_2",
                                    "a_b_3", "a_b_2_2", "n", "flat", "b_3_b_amp", "stress_0",
                                    "stress_1"])
        text = run(ZEL, "export", HOSTILE, "--format", "c", "--name", "3 \u00fc", "--quiet").stdout
        self.assertIn(b"void m_3_predict(const double inputs[3], double outputs[14])", text)

    def test_criteria_that_are_no_arithmetic_are_named(self):
        left_out = [entry["name"] for entry in self.studies[2].model["criteria_left_out"]]
        self.assertEqual(left_out, LEFT_OUT)
        for name in LEFT_OUT:
            self.assertIn(f'criterion "{name}" is left out: ', self.studies[2].warnings)

    def test_refusals_leave_the_old_file(self):
        out = pathlib.Path(self.folder.name, "old.c")
        out.write_text("old")
        for arguments, text in [
                ((MISSING, "--format", "c"), 'response "mass" cannot be exported: it has no model'),
                ((HOSTILE, "--response", "none"), 'no response "none"'),
                ((out,), str(out)),
                ((HOSTILE, "--hash", "00"), "hostile.vrdb")]:
            result = run(ZEL, "export", *arguments, "-o", out)
            self.assertEqual(result.returncode, 1, result.stderr)
            self.assertIn(text, result.stderr.decode())
            self.assertEqual(out.read_text(), "old")
            self.assertEqual(len(list(out.parent.glob("old*"))), 1)
        for link, target, status in (("link", "new.c", 0), ("circle", "circle", 1)):
            link = out.with_name(link)
            link.symlink_to(target)
            self.assertEqual(run(ZEL, "export", SINGLE, "-o", link).returncode, status)
            self.assertTrue(link.is_symlink())
        self.assertTrue(out.with_name("new.c").is_file())
        rest = run(ZEL, "export", MISSING, "--response", "flat", "--response", "stress[1]")
        self.assertEqual([entry["name"] for entry in json.loads(rest.stdout)["responses"]],
                         ["flat", "stress[1]"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
