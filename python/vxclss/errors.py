# SPDX-License-Identifier: MIT
"""The errors of vxclss, a tree that mirrors the one of C++.

``except vxclss.Error`` catches all of them. Each has the library's ``number`` and ``message``; one
that arose in a batch tells its ``row`` too. Leaves that have a counterpart among Python's own
errors derive from that as well, so ``except ValueError`` and ``except IndexError`` do what a
Python program expects.
"""

from __future__ import annotations

from typing import Any, ClassVar, Dict, Optional, Type

__all__ = [
    "ArchiveError",
    "BadFeatures",
    "BadIndex",
    "BadLabel",
    "BadMatrix",
    "BadMethod",
    "BadParams",
    "BadPointer",
    "ClassifierError",
    "Error",
    "InsufficientTrainData",
    "Malformed",
    "NotSupported",
    "NotTrained",
    "StatusError",
    "StopRequested",
    "StreamFailure",
    "UnknownVersion",
    "Unstorable",
]


class Error(Exception):
    """Base of all errors of the library (``vxException``).

    Attributes
    ----------
    number : int
        Fixed for each class, for programs that report errors by number; 0 for a class of a host's
        own that has none here.
    message : str
        The library's text, fixed and English.
    row : int or None
        Row of the batch in which the error arose.
    """

    NUMBER: ClassVar[int] = 0

    def __init__(self, message: str = "", *, number: Optional[int] = None,
                 row: Optional[int] = None) -> None:
        super().__init__(message)
        self.message = message
        self.number = self.NUMBER if number is None else number
        self.row = row

    def __str__(self) -> str:
        text = self.message or f"{type(self).__name__} (0x{self.number:08X})"
        return text if self.row is None else f"row {self.row}: {text}"


class BadPointer(Error):
    """An object is missing, or of another class than its user needs (``vxBadPointer``)."""

    NUMBER = 0x10000000


class StopRequested(Error):
    """The host's own attention handler asked to stop (``vxStopRequested``).

    Ctrl-C raises ``KeyboardInterrupt`` instead.
    """

    NUMBER = 0x10000001


class StatusError(Error):
    """A failure status that has no error of its own (``vxStatusException``)."""

    NUMBER = 0x10000002
    status: Optional[int] = None


class BadMatrix(Error, IndexError):
    """An index outside a matrix, or an impossible size (``vxBadMatrix``)."""

    NUMBER = 0x10000003


class ArchiveError(Error):
    """Base of what storing and loading raise (``vxArchive::Errors``)."""


class UnknownVersion(ArchiveError, ValueError):
    """A version byte that this release does not know (``vxArchive::UnknownVersion``).

    ``name`` is a class or a source unit, ``line`` a line there; empty and 0 if not known.
    """

    NUMBER = 0x10000004
    name: str = ""
    line: int = 0


class Malformed(ArchiveError, ValueError):
    """Bytes that no archive writes (``vxArchive::Malformed``)."""

    NUMBER = 0x10000005


class Unstorable(ArchiveError, ValueError):
    """A value that an archive can't hold (``vxArchive::Unstorable``)."""

    NUMBER = 0x10000006


class StreamFailure(ArchiveError):
    """A stream that did not take what was written (``vxArchive::StreamFailure``)."""

    NUMBER = 0x10000007


class ClassifierError(Error):
    """Base of what the classification itself raises (``vxClassifierDefs::Errors``)."""


class BadParams(ClassifierError, ValueError):
    """A bad value of a parameter, score, cost or frequency (``vxClassifierDefs::BadParams``)."""

    NUMBER = 0x10004200


class NotTrained(ClassifierError):
    """An operation that needs training (``vxClassifierDefs::NotTrained``)."""

    NUMBER = 0x10004201


class BadIndex(ClassifierError, IndexError):
    """An index out of range (``vxClassifierDefs::BadIndex``)."""

    NUMBER = 0x10004202


class BadLabel(ClassifierError, ValueError):
    """A bad or repeated category label (``vxClassifierDefs::BadLabel``)."""

    NUMBER = 0x10004203


class BadMethod(ClassifierError):
    """An operation of another technique (``vxClassifierDefs::BadMethod``)."""

    NUMBER = 0x10004204


class NotSupported(ClassifierError, NotImplementedError):
    """A feature that the library does not have (``vxClassifierDefs::NotImplemented``)."""

    NUMBER = 0x10004205


class BadFeatures(ClassifierError, ValueError):
    """A wrong number of measurements, or an invalid one where it must be valid
    (``vxClassifierDefs::BadFeatures``)."""

    NUMBER = 0x10004206


class InsufficientTrainData(ClassifierError, ValueError):
    """Too little data (``vxClassifierDefs::InsufficientTrainData``)."""

    NUMBER = 0x10004207


_LEAVES: Dict[int, Type[Error]] = {
    leaf.NUMBER: leaf
    for leaf in (BadPointer, StopRequested, StatusError, BadMatrix, UnknownVersion, Malformed,
                 Unstorable, StreamFailure, BadParams, NotTrained, BadIndex, BadLabel, BadMethod,
                 NotSupported, BadFeatures, InsufficientTrainData)
}


def _made(number: int, message: str, row: Optional[int] = None, **details: Any) -> Error:
    """The error of that number; the compiled part comes here with what it has caught."""
    error = _LEAVES.get(number, Error)(message, number=number, row=row)
    for name, value in details.items():
        setattr(error, name, value)
    return error
