"""Metamodels of engineering studies: training, and predictions from project files (.vrdb).

    import zelsolver

    project = zelsolver.train(frame, inputs=["width", "height"], responses=["mass"])
    solution = project.solve({**project.reference, "width": [1.0, 1.5, 2.0]})
    print(solution["mass"], project.cop("mass"))

    project = zelsolver.Project("study.vrdb")  # or one that exists

The package calls the shared libraries libzelsolver and libzelstudy, which must be installed; the
environment variables ZELSOLVER_LIBRARY and ZELSTUDY_LIBRARY name other copies of them. Regressor
needs scikit-learn, Project.plot matplotlib, zelsolver.dask the package dask.
"""

from typing import TYPE_CHECKING, Any

from .errors import (BoundsError, ClosedError, InputError, LibraryNotFoundError, ModelError,
                     ProjectError, ProjectNotFoundError, SignatureError, UnknownNameError, ZelError)
from .expressions import evaluate
from .findings import Candidate, Distribution, Residuals
from .handle import file_hash
from .library import library_version, set_num_threads
from .project import Project
from .results import Bounds, LocalErrors, NamedArrays, Solution
from .sampling import sample
from .training import train

if TYPE_CHECKING:
    from .regressor import Regressor

__version__ = "1.0.0"

__all__ = [
    "Bounds", "BoundsError", "Candidate", "ClosedError", "Distribution", "InputError",
    "LibraryNotFoundError", "LocalErrors", "ModelError", "NamedArrays", "Project", "ProjectError",
    "ProjectNotFoundError", "Regressor", "Residuals", "SignatureError", "Solution",
    "UnknownNameError", "ZelError", "evaluate", "file_hash", "library_version", "sample",
    "set_num_threads", "train",
]


def __getattr__(name: str) -> Any:
    if name == "Regressor":  # takes long to load, and needs another package
        from .regressor import Regressor

        return Regressor
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
