# ZEL_PYTHON: the interpreter for tests that need numpy, pandas or pytest. Debian's own comes first:
# it is the one that finds Debian's packages.
find_program(ZEL_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(ZEL_PYTHON python3 REQUIRED)
