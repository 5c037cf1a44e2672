#!/usr/bin/env python3
"""The short form of a long run, which also makes the projects for it: endurance_test.py ZEL ENDURANCE
[SOLVES FILES]"""
import pathlib
import subprocess
import sys
import tempfile

ZEL, ENDURANCE = sys.argv[1:3]
SOLVES, FILES = sys.argv[3:5] or ["20000", "50"]

with tempfile.TemporaryDirectory() as folder:
    projects = []
    for power in (1, 2):
        table = pathlib.Path(folder) / f"{power}.csv"
        table.write_text("a,y\n" + "".join(f"{a},{1 + a ** power}\n" for a in range(1, 9)))
        projects.append(str(table.with_suffix(".vrdb")))
        subprocess.run([ZEL, "train", table, "--inputs", "a", "--responses", "y", "--budget", "0.1",
                        "--criterion", "c: y+a", "-o", projects[-1], "--quiet"], check=True)
    sys.exit(subprocess.run([ENDURANCE, *projects, SOLVES, FILES]).returncode)
