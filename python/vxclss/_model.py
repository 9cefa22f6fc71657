# SPDX-License-Identifier: MIT
"""Model files: a trained tool with the names of its measurements and categories."""

from __future__ import annotations

import errno
import os
import tempfile
from dataclasses import dataclass
from typing import List, Optional, Sequence, Union

from . import _core
from ._core import Tool
from .errors import Malformed

_Path = Union[str, "os.PathLike[str]"]

# More categories than that want names of their own.
_MOST_MADE_NAMES = 1_000_000


@dataclass(eq=False)
class Model:
    """A trained tool, and what its measurements and labels are called.

    ``category_names[label]`` names a label, ``measurement_names[i]`` column i of a batch.
    """

    tool: Tool
    measurement_names: List[str]
    category_names: List[str]

    def __repr__(self) -> str:
        return (f"<Model {self.tool!r}: {len(self.measurement_names)} measurements, "
                f"{len(self.category_names)} categories>")


def _checked(kind: str, names: Sequence[str]) -> List[str]:
    if isinstance(names, str):
        raise TypeError(f"{kind} names are a list of str, not one str")
    checked = list(names)
    for name in checked:
        if not isinstance(name, str):
            raise TypeError(f"{kind} names are str, not {type(name).__name__}")
        name.encode()  # half a surrogate pair is no text
    if len(set(checked)) != len(checked):
        raise ValueError(f"two {kind} names are equal")
    return checked


def _category_names(tool: Tool, names: Optional[Sequence[str]]) -> List[str]:
    labels = tool.category_labels
    needed = int(labels[-1]) + 1 if len(labels) else 0
    if names is None:
        if needed > _MOST_MADE_NAMES:
            raise ValueError(f"labels up to {needed - 1} need category_names")
        return [str(label) for label in range(needed)]
    checked = _checked("category", names)
    if len(checked) < needed:
        raise ValueError(f"{len(checked)} category names for labels up to {needed - 1}")
    return checked


def _measurement_names(tool: Tool, names: Optional[Sequence[str]]) -> List[str]:
    least, most = tool.measurement_counts
    if names is None:
        return [f"x{i}" for i in range(least)]
    checked = _checked("measurement", names)
    if len(checked) < least or (most is not None and len(checked) > most):
        raise ValueError(f"{len(checked)} measurement names for a tool of {least} measurements")
    return checked


def check_names(model: Model) -> None:
    """Raises ValueError unless a model's names are unlike each other and as many as it needs."""
    _measurement_names(model.tool, model.measurement_names)
    _category_names(model.tool, model.category_names)


def save(path: _Path, tool: Tool, measurement_names: Optional[Sequence[str]] = None,
         category_names: Optional[Sequence[str]] = None) -> None:
    """Writes a model file, which ``vxclss run``, C++ and load() open.

    The file appears whole or not at all. Without names, measurements are called x0, x1, ... and
    categories as their labels. A decision tree does not know how many measurements it is meant
    for; without names it gets as many as its questions ask about.

    Raises TypeError for something other than a Tool; NotTrained; ValueError for names that are
    equal or too few; OSError.
    """
    if not isinstance(tool, Tool):
        raise TypeError(f"save() writes a Tool, not {type(tool).__name__}")
    write_whole(path, _core.model_bytes(tool, _measurement_names(tool, measurement_names),
                                        _category_names(tool, category_names)))


def write_whole(path: _Path, data: bytes) -> None:
    """Writes a file that appears whole or not at all."""
    target = os.path.realpath(path)
    # Replacing a device or a pipe by a file would be no favour, /dev/null least of all.
    if os.path.exists(target) and not os.path.isfile(target):
        raise OSError(errno.EINVAL, "is not a regular file", os.fspath(path))
    handle, temporary = tempfile.mkstemp(prefix=".vxclss-", dir=os.path.dirname(target))
    try:
        with os.fdopen(handle, "wb") as file:
            file.write(data)
            file.flush()
            os.fsync(file.fileno())
        os.chmod(temporary, _mode(target))
        os.replace(temporary, target)
    except BaseException:
        os.unlink(temporary)
        raise


def _mode(target: str) -> int:
    """The permissions of what is replaced, or those of a new file."""
    try:
        return os.stat(target).st_mode & 0o7777
    except FileNotFoundError:
        mask = os.umask(0)
        os.umask(mask)
        return 0o666 & ~mask


def load(path: _Path) -> Model:
    """The model of a file that save(), ``vxclss train`` or ``vxclss tree`` has written.

    Raises ArchiveError for a file that is none, from its first byte to its last, or whose names are
    not those of its tool's measurements and labels; NotTrained for one without a trained tool;
    OSError.
    """
    with open(path, "rb") as file:
        data = file.read()
    tool, measurements, categories = _core.parsed_model(data)
    tool.category_labels  # a model file holds a trained tool
    model = Model(tool, measurements, categories)
    try:
        check_names(model)
    except ValueError as error:
        raise Malformed(f"Names that don't fit the tool: {error}") from None
    return model
