#!/usr/bin/env python3
"""The installed tree, and the Debian packages, as others use them.

    install_test.py CMAKE BUILD_DIRECTORY SAMPLE VERSION
"""
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

CMAKE, VERSION = sys.argv[1], sys.argv[4]
BUILD, SAMPLE = (pathlib.Path(argument).resolve() for argument in sys.argv[2:4])
MAJOR = VERSION.split(".")[0]
SONAME = f"libzelsolver.so.{MAJOR}"
DESIGN = [12.0, 15.0, 9.0, 11.0, 20.0, 8.0, 14.0, 10.5, 16.0, 13.0]


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True,
                            timeout=120, **options)
    assert result.returncode == 0, f"{command}\n{result.stdout}\n{result.stderr}"
    return result.stdout


def predict(library):
    """Predictions at DESIGN through the C interface of `library`, in a process of its own. Its log
    goes to standard output as well."""
    program = f"""
import ctypes
out, design = (ctypes.c_double * 12)(), (ctypes.c_double * 10)(*{DESIGN})
assert ctypes.CDLL({str(library)!r}).dzel2_solve({str(SAMPLE)!r}.encode(), 1, design, 10, 2, out,
                                                 12) == 0
print(*out, sep=chr(10))"""
    return [float(line) for line in run(sys.executable, "-c", program).splitlines()[-12:]]


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        first = pathlib.Path(cls.folder.name, "first place")
        run(CMAKE, "--install", BUILD, "--prefix", first)
        cls.prefix = pathlib.Path(cls.folder.name, "another place")
        first.rename(cls.prefix)  # whatever works here works anywhere
        cls.header = cls.prefix / "include/zelsolver/zelsolver.h"
        cls.library = next(cls.prefix.rglob("libzelsolver.so"))
        cls.study = cls.library.with_name("libzelstudy.so")
        cls.environment = {
            **os.environ, "CMAKE_PREFIX_PATH": str(cls.prefix),
            "PKG_CONFIG_PATH": str(cls.library.parent / "pkgconfig"),
            "LD_LIBRARY_PATH": str(cls.library.parent)}

    def test_holds_what_a_user_looks_for(self):
        data = self.prefix / "share"
        for file in [self.header, self.prefix / "bin/zel", data / "man/man1/zel.1.gz",
                     data / "bash-completion/completions/zel", data / "doc/zelsolver/README.md",
                     data / "doc/zelsolver/examples/zel_tenbar.vrdb",
                     self.header.with_name("study.h"),
                     self.library.parent / "pkgconfig/zelsolver.pc",
                     self.library.parent / "pkgconfig/zelstudy.pc",
                     self.library.parent / "cmake/zelsolver/zelsolver-config.cmake"]:
            self.assertTrue(file.is_file(), file)
        for library in (self.library, self.study):
            soname = f"{library.name}.{MAJOR}"
            self.assertEqual(os.readlink(library), soname)
            self.assertEqual(os.readlink(library.with_name(soname)), f"{library.name}.{VERSION}")
            self.assertIn(f"soname: [{soname}]", run("readelf", "-d", library))

    def test_tells_nothing_of_where_it_was_built(self):
        for file in self.prefix.rglob("*"):
            if file.is_file() and not file.is_symlink():
                content = file.read_bytes()
                self.assertNotIn(str(BUILD).encode(), content, file)
                self.assertNotIn(b"first place", content, file)
        for binary in (self.library, self.study, self.prefix / "bin/zel"):
            self.assertNotRegex(run("readelf", "-d", binary), "RPATH|RUNPATH")

    def test_libraries_export_what_their_headers_declare(self):
        for library, header, names in (
                (self.library, self.header, r"ZEL_API [^;(]*?(dzel2?_\w+)\("),
                (self.study, self.header.with_name("study.h"),
                 r"ZELSTUDY_API [^;(]*?(zelstudy_\w+)\(")):
            declared = set(re.findall(names, header.read_text()))
            exported = {line.split()[2] for line in
                        run("nm", "-D", "--defined-only", library).splitlines()}
            self.assertEqual(exported, declared)
            self.assertTrue(library == self.study or len(exported) == 81)

    def test_program_and_manual_page_run_from_there(self):
        self.assertIn(VERSION, run(self.prefix / "bin/zel", "--version"))
        page = run("mandoc", "-T", "utf8", self.prefix / "share/man/man1/zel.1.gz")
        self.assertIn(f"zelsolver {VERSION}", page)

    def test_outside_projects_find_it_through_cmake(self):
        # The examples that are installed beside it are such a project.
        examples = pathlib.Path(self.folder.name, "examples")
        run(CMAKE, "-S", self.prefix / "share/doc/zelsolver/examples", "-B", examples,
            env=self.environment)
        run(CMAKE, "--build", examples, env=self.environment)
        text = run(examples / "c_caller", SAMPLE, env=self.environment)
        self.assertIn("displacement", text)
        self.assertEqual(run(examples / "cpp_caller", SAMPLE, env=self.environment), text)
        project = pathlib.Path(self.folder.name, "study.vrdb")
        text = run(examples / "study_in_c", project, env=self.environment)
        found, exact = re.findall(r"stiffness\(1.2, 1.8\) = (\S+), exactly (\S+)", text)[0]
        self.assertAlmostEqual(float(found), float(exact), delta=0.01)
        self.assertIn("stiffness", run(self.prefix / "bin/zel", "info", project))
        other = pathlib.Path(self.folder.name, "other")  # the next generation would not fit
        other.mkdir()
        (other / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.16)\nproject(other)\n"
                                              f"find_package(zelsolver {int(MAJOR) + 1} REQUIRED)\n")
        result = subprocess.run([CMAKE, "-S", other, "-B", other / "build"], capture_output=True,
                                text=True, timeout=60, env=self.environment)
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("zelsolver", result.stderr)

    def test_outside_project_finds_it_through_pkg_config(self):
        self.assertEqual(run("pkg-config", "--modversion", "zelsolver", env=self.environment).strip(),
                         VERSION)
        flags = run("pkg-config", "--cflags", "--libs", "zelsolver", env=self.environment).strip()
        examples = self.prefix / "share/doc/zelsolver/examples"
        for compiler, source in (("gcc -std=c99 -Wall -Wextra -Wpedantic -Werror", "c_caller.c"),
                                 ("g++ -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror", "cpp_caller.cpp")):
            with self.subTest(source):
                program = pathlib.Path(self.folder.name, source + ".out")
                run("sh", "-c", f"{compiler} '{examples / source}' {flags} -o '{program}'")
                self.assertIn("displacement", run(program, SAMPLE, env=self.environment))
        flags = run("pkg-config", "--cflags", "--libs", "zelstudy", env=self.environment).strip()
        run("sh", "-c", "gcc -std=c99 -Wall -Wextra -Wpedantic -Wstrict-prototypes -Werror "
            f"'{examples / 'study_in_c.c'}' {flags} -lm -o '{self.folder.name}/study_in_c'")


class DebianPackages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        os.umask(0o077)  # of a careful user; the packages must not inherit it
        cpack = pathlib.Path(CMAKE).with_name("cpack")
        run(cpack, "--config", BUILD / "CPackConfig.cmake", "-B", cls.folder.name,
            "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=gzip")  # a third of the time of xz
        cls.packages = {path.name.split("_")[0]: path
                        for path in pathlib.Path(cls.folder.name).glob("*.deb")}

    def field(self, package, name):
        return run("dpkg-deb", "-f", self.packages[package], name).strip()

    def contents(self, package):
        """{path: (permissions, owner)}, folders with a / at their end."""
        lines = run("dpkg-deb", "-c", self.packages[package]).splitlines()
        return {words[5][1:]: (words[0], words[1]) for words in (line.split() for line in lines)}

    def test_know_what_they_need(self):
        library, study = f"libzelsolver{MAJOR}", f"libzelstudy{MAJOR}"
        self.assertEqual(set(self.packages),
                         {library, study, "libzelsolver-dev", "zelsolver", "python3-zelsolver"})
        architecture = run("dpkg", "--print-architecture").strip()
        for package in self.packages:
            self.assertEqual(self.field(package, "Version"), f"{VERSION}-1")
            self.assertEqual(self.field(package, "Architecture"),
                             "all" if package.startswith("python3-") else architecture)
            self.assertIn("@", self.field(package, "Maintainer"))
            self.assertGreater(len(self.field(package, "Description").splitlines()), 3)
        needs = self.field(library, "Depends")
        for dependency in ("libc6 (>=", "libstdc++6 (>=", "libboost-serialization", "libcrypto++",
                           "libjsoncpp", "libtbb12"):
            self.assertIn(dependency, needs)
        self.assertIn("libcsv", self.field("zelsolver", "Depends"))
        self.assertIn("libcsv", self.field(study, "Depends"))
        self.assertEqual(self.field("libzelsolver-dev", "Depends"),
                         f"{library} (= {VERSION}-1), {study} (= {VERSION}-1)")
        self.assertIn("python3-numpy", self.field("python3-zelsolver", "Depends"))
        self.assertIn(f"{library} (>= {VERSION})", self.field("python3-zelsolver", "Depends"))
        with tempfile.TemporaryDirectory() as control:
            run("dpkg-deb", "-e", self.packages[library], control)
            self.assertIn(f"libzelsolver {MAJOR} {library}",
                          pathlib.Path(control, "shlibs").read_text())
            self.assertIn("ldconfig", pathlib.Path(control, "triggers").read_text())

    def test_hold_their_files(self):
        library = f"libzelsolver{MAJOR}"
        expected = {
            library: [f"lib/{SONAME}", f"lib/libzelsolver.so.{VERSION}"],
            f"libzelstudy{MAJOR}": [f"lib/libzelstudy.so.{MAJOR}", f"lib/libzelstudy.so.{VERSION}"],
            "libzelsolver-dev": ["include/zelsolver/zelsolver.h", "include/zelsolver/zelsolver.hpp",
                                 "include/zelsolver/study.h", "lib/libzelsolver.so",
                                 "lib/libzelstudy.so", "lib/pkgconfig/zelstudy.pc",
                                 "lib/pkgconfig/zelsolver.pc",
                                 "lib/cmake/zelsolver/zelsolver-config.cmake",
                                 "lib/cmake/zelsolver/zelsolver-config-version.cmake"],
            "zelsolver": ["bin/zel", "share/man/man1/zel.1.gz",
                          "share/bash-completion/completions/zel", "share/doc/zelsolver/README.md"],
            "python3-zelsolver": ["lib/python3/dist-packages/zelsolver/__init__.py",
                                  "lib/python3/dist-packages/zelsolver/py.typed"],
        }
        seen = {}
        for package, files in expected.items():
            contents = self.contents(package)
            with self.subTest(package):
                about = [f"share/doc/{package}/{name}"
                         for name in ("copyright", "changelog.gz", "changelog.Debian.gz")]
                paths = {re.sub("^lib/[^/]*-linux-[^/]*/", "lib/", path.removeprefix("/usr/"))
                         for path in contents}
                self.assertEqual(set(files + about) - paths, set())
                for path, (permissions, owner) in contents.items():
                    self.assertEqual(owner, "root/root", path)
                    self.assertRegex(permissions, "^drwxr-xr-x|^-rwxr-xr-x|^-rw-r--r--|^l", path)
                    if not path.endswith("/"):
                        self.assertNotIn(path, seen, "in two packages")
                        seen[path] = package
        self.assertEqual({path for path in seen if path.startswith("/usr/bin/")}, {"/usr/bin/zel"})

    def test_work_where_they_are_unpacked(self):
        root = pathlib.Path(self.folder.name, "root")
        for package in self.packages.values():
            run("dpkg-deb", "-x", package, root)
        self.assertIn("area_1", run(root / "usr/bin/zel", "info", SAMPLE))
        library = next(root.rglob(SONAME))
        predicted = predict(library)
        self.assertEqual(predicted, predict(BUILD / "src/api" / SONAME))
        # The mass is linear in the areas, density times length: lengths of the truss's bars in in.
        lengths = [360.0] * 6 + [360.0 * math.sqrt(2.0)] * 4
        mass = 0.1 * sum(area * length for area, length in zip(DESIGN, lengths))
        self.assertAlmostEqual(predicted[0], mass, delta=1e-9 * mass)
        environment = {**os.environ, "LD_LIBRARY_PATH": str(library.parent),
                       "PYTHONPATH": str(root / "usr/lib/python3/dist-packages")}
        environment.pop("ZELSOLVER_LIBRARY", None)
        program = f"import zelsolver; print(len(zelsolver.Project({str(SAMPLE)!r}).inputs))"
        self.assertEqual(run(sys.executable, "-B", "-c", program, env=environment).splitlines()[-1], "10")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
