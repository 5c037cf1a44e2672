"""Predictions from the trained metamodels of an engineering study's project file (.vrdb).

    import zelsolver

    with zelsolver.Project("study.vrdb") as project:
        solution = project.solve({**project.reference, "width": [1.0, 1.5, 2.0]})
        print(solution["mass"])

The package calls the shared library libzelsolver, which must be installed; the environment variable
ZELSOLVER_LIBRARY names another copy of it.
"""

from .errors import (BoundsError, ClosedError, InputError, LibraryNotFoundError, ModelError,
                     ProjectError, ProjectNotFoundError, SignatureError, UnknownNameError, ZelError)
from .handle import file_hash
from .library import library_version, set_num_threads
from .project import Project
from .results import Bounds, LocalErrors, NamedArrays, Solution

__version__ = "1.0.0"

__all__ = [
    "Bounds", "BoundsError", "ClosedError", "InputError", "LibraryNotFoundError", "LocalErrors",
    "ModelError", "NamedArrays", "Project", "ProjectError", "ProjectNotFoundError",
    "SignatureError", "Solution", "UnknownNameError", "ZelError", "file_hash", "library_version",
    "set_num_threads",
]
