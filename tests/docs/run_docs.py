#!/usr/bin/env python3
"""Runs what README.md and docs/ show, as their reader would.

    run_docs.py CMAKE BUILD_DIRECTORY SOURCE_DIRECTORY [page.md ...]

Each page runs in a folder of its own that holds examples/ with the sample projects, beside an
installation of the build: zel on the PATH, the library where compilers, CMake and Python find it.

    ```console      Lines that begin with "$ " are commands for bash; a line that ends in \\ goes on,
                    a here-document as well. What follows is what they print, on both streams.
                    Numbers may differ in their tenth digit (the processor decides about the last
                    ones). A line "..." stands for any lines, "..." inside of a line for any text. A
                    command must succeed; "# status 1" behind it says how it fails.
    ```c demo.c     Any language with a file name: the block is that file.
    ```pycon        A session with Python, which remembers the page's sessions before it.
    ```sh           Commands that need another place than this: only looked at.
    ```             Text.

Besides, links lead to files, all pages are linked, and the picture is up to date.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

NUMBER = re.compile(r"(?<![\w.])-?\d+(?:\.\d+)?(?:e[-+]?\d+)?(?![\w])", re.IGNORECASE)
NUMBER_IN_PATH = re.compile(r"\d+(?:\.\d+)?")
CUT_OFF = 128 + 13  # a command before "| head"
TOLERANCE = 1e-9  # relative; processors differ in the last digits
SAMPLES = ["zel_tenbar.vrdb", "zel_tenbar_random.vrdb", "points.csv"]
LANGUAGES_OF_FILES = {"c", "cpp", "python", "cmake", "csv", "make"}


class Fault(Exception):
    pass


def same_numbers(expected, actual):
    """Whether the texts are the same but for the last digits of their numbers."""
    if expected == actual:
        return True
    if NUMBER.split(expected) != NUMBER.split(actual):
        return False
    pairs = zip(map(float, NUMBER.findall(expected)), map(float, NUMBER.findall(actual)))
    return all(abs(a - b) <= TOLERANCE * abs(a) for a, b in pairs)


def same_line(expected, actual):
    if "..." not in expected:
        return same_numbers(expected, actual)
    return re.fullmatch(".*".join(map(re.escape, expected.split("..."))), actual) is not None


def same_lines(expected, actual):
    if not expected:
        return not actual
    if expected[0].strip() == "...":
        return any(same_lines(expected[1:], actual[i:]) for i in range(len(actual) + 1))
    return bool(actual) and same_line(expected[0], actual[0]) and same_lines(expected[1:],
                                                                             actual[1:])


def check_matching():
    """The comparison finds what differs: otherwise no page could fail."""
    assert same_lines(["a 1.5", "...", "z"], ["a 1.5", "b", "c", "z"])
    assert same_lines(["a 0.123456789012345"], ["a 0.123456789012349"])
    assert same_lines(["took ... s"], ["took 12 s"])
    assert not same_lines(["a 1.5"], ["a 1.5001"])
    assert not same_lines(["a -1.5"], ["a 1.5"])
    assert not same_lines(["a 1"], ["b 1"])
    assert not same_lines(["a"], ["a", "b"])
    assert not same_lines(["a", "b"], ["a"])
    assert not same_lines(["...", "z"], ["z", "y"])


def blocks(text):
    """(line number, language, file name or "", lines) of each fenced block."""
    found, current = [], None
    for number, line in enumerate(text.splitlines(), 1):
        if current is None and line.startswith("```"):
            language, _, name = line[3:].strip().partition(" ")
            current = (number, language, name.strip(), [])
        elif current is not None and line.startswith("```"):
            found.append(current)
            current = None
        elif current is not None:
            current[3].append(line)
    if current is not None:
        raise Fault(f"{current[0]}: a block without end")
    return found


def steps(lines):
    """(offset, command, expected status, expected output lines) of a console block."""
    found, i = [], 0
    while i < len(lines):
        if not lines[i].startswith("$ "):
            raise Fault(f"{lines[i]!r} belongs to no command")
        start, command = i, [lines[i][2:]]
        i += 1
        here = re.search(r"<<-?\s*'?(\w+)'?", command[0])
        while i < len(lines) and (command[-1].endswith("\\") if not here
                                  else command[-1] != here[1]):
            command.append(lines[i])
            i += 1
        output = []
        while i < len(lines) and not lines[i].startswith("$ "):
            output.append(lines[i].rstrip())
            i += 1
        while output and not output[-1]:
            output.pop()
        status = re.search(r"# status (\d+)$", command[0])
        found.append((start, "\n".join(command), int(status[1]) if status else 0, output))
    return found


def execute(command, expected, status, folder, environment):
    result = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=folder, env=environment,
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, timeout=300)
    actual = [line.rstrip() for line in result.stdout.splitlines()]
    while actual and not actual[-1]:
        actual.pop()
    returncode = 0 if result.returncode == CUT_OFF else result.returncode
    if returncode != status or not same_lines(expected, actual):
        raise Fault(f"$ {command}\nended with status {returncode}, expected {status}, and "
                    "printed\n" + "\n".join(actual) + "\nexpected\n" + "\n".join(expected))


def look_at(command, source):
    """A command that is not run: its program is there, and so is the preset that it names."""
    words = command.split()
    if shutil.which(source / words[0] if "/" in words[0] else words[0]) is None:
        raise Fault(f"{words[0]}: no such program")
    presets = {preset["name"] for preset in
               json.loads((source / "CMakePresets.json").read_text())["configurePresets"]}
    for name in re.findall(r"--preset (\S+)", command):
        if name not in presets:
            raise Fault(f"{name}: no such preset")


def run_page(page, source, folder, environment):
    """Runs the blocks of a page in their order. Gives the number of commands."""
    count, session = 0, ""
    for number, language, name, lines in blocks(page.read_text()):
        try:
            if language == "console":
                for _, command, status, expected in steps(lines):
                    execute(command, expected, status, folder, environment)
                    count += 1
            elif language == "pycon":
                session += "\n".join(lines) + "\n\n"
                (folder / "session.txt").write_text(session)
                # The library's log, if any, stands before.
                execute("python3 -m doctest -o ELLIPSIS session.txt", ["..."], 0, folder,
                        environment)
                count += 1
            elif language == "sh":
                for command in lines:
                    if command.strip():
                        look_at(command, source)
            elif name:
                (folder / name).parent.mkdir(parents=True, exist_ok=True)
                (folder / name).write_text("\n".join(lines) + "\n")
            elif language in LANGUAGES_OF_FILES:
                raise Fault("a block of code needs a file name, so that the page can use it")
        except Fault as fault:
            raise Fault(f"{page.relative_to(source)}, block in line {number}: {fault}") from None
    return count


def check_picture(source, _, environment):
    """The picture is what its script draws now, to a fifth of a pixel."""
    picture = source / "docs/images/truss.svg"
    drawn = subprocess.run([sys.executable, source / "tools/draw_truss.py", "zel"],
                           env=environment, capture_output=True, text=True, check=True).stdout
    kept = picture.read_text()
    numbers = [[float(number) for number in NUMBER_IN_PATH.findall(text)] for text in (kept, drawn)]
    if (NUMBER_IN_PATH.split(kept) != NUMBER_IN_PATH.split(drawn)
            or any(abs(a - b) > 0.2 for a, b in zip(*numbers))):
        raise Fault(f"{picture.relative_to(source)} is not what tools/draw_truss.py draws")


def check_links(source, pages, _):
    """Links lead to files, and all pages are linked."""
    linked = {source / "README.md"}
    for page in pages:
        for target in re.findall(r"\]\((?!\w+:)([^)#]+)[^)]*\)", page.read_text()):
            path = (page.parent / target).resolve()
            if not path.exists():
                raise Fault(f"{page.relative_to(source)}: {target} does not exist")
            linked.add(path)
    missing = set(pages) - linked
    if missing:
        raise Fault(f"no page links {sorted(str(page.name) for page in missing)}")


def main():
    cmake, build, source = sys.argv[1], *map(pathlib.Path, sys.argv[2:4])
    source = source.resolve()
    all_pages = [source / "README.md", *sorted((source / "docs").glob("*.md"))]
    pages = [pathlib.Path(page).resolve() for page in sys.argv[4:]] or all_pages
    check_matching()
    faults = []
    with tempfile.TemporaryDirectory() as place:
        prefix = pathlib.Path(place, "installed")
        subprocess.run([cmake, "--install", str(build), "--prefix", str(prefix)], check=True,
                       stdout=subprocess.DEVNULL, timeout=300)
        library = next(prefix.rglob("libzelsolver.so")).parent
        (prefix / "bin/python3").symlink_to(sys.executable)  # the one that finds numpy
        environment = {
            **os.environ, "LC_ALL": "C.UTF-8", "TERM": "dumb",
            "PATH": f"{prefix / 'bin'}{os.pathsep}{os.environ['PATH']}",
            "CMAKE_PREFIX_PATH": str(prefix), "PKG_CONFIG_PATH": str(library / "pkgconfig"),
            "LD_LIBRARY_PATH": str(library), "PYTHONPATH": str(source / "python"),
            "PYTHONDONTWRITEBYTECODE": "1"}
        environment.pop("ZELSOLVER_LIBRARY", None)
        environment.pop("ZELSTUDY_LIBRARY", None)
        for page in pages:
            folder = pathlib.Path(place, page.stem)
            (folder / "examples").mkdir(parents=True)
            for name in SAMPLES:
                shutil.copy(source / "examples" / name, folder / "examples")
            try:
                count = run_page(page, source, folder, environment)
                print(f"{page.relative_to(source)}: {count} commands")
            except Fault as fault:
                faults.append(fault)
        for check in (check_picture, check_links):
            try:
                check(source, all_pages, environment)
            except Fault as fault:
                faults.append(fault)
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
