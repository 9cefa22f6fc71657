# SPDX-License-Identifier: MIT
"""Pickling through archives."""

from __future__ import annotations

from typing import Any, Tuple, Type, TypeVar, overload

from . import _core

_T = TypeVar("_T")


def _unpickled(cls: Any, data: bytes) -> Any:
    """What pickles, copy.copy() and copy.deepcopy() rebuild an object with."""
    return cls.from_bytes(data)


def _empty(cls: Any) -> Any:
    """An object for __setstate__() to fill."""
    return cls.__new__(cls)


def _reduced(obj: Any) -> Tuple[Any, ...]:
    """How an object of a class that is derived in Python is pickled and copied."""
    cls = type(obj)
    if any(vars(base).get("__slots__") for base in cls.__mro__):
        raise TypeError(f"{cls.__name__} has __slots__, which neither copies nor pickles keep")
    return _empty, (cls,), obj.__getstate__()


def dumps(obj: Any) -> bytes:
    """The archive of an object, as C++ stores it with ``archive || object``."""
    if not hasattr(type(obj), "from_bytes"):
        raise TypeError(f"{type(obj).__name__} has no archive")
    data: bytes = obj.to_bytes()
    return data


@overload
def loads(data: Any, cls: Type[_T], *, rest: bool = ...) -> _T: ...


@overload
def loads(data: Any, cls: Tuple[Type[Any], ...], *, rest: bool = ...) -> Tuple[Any, ...]: ...


def loads(data: Any, cls: Any, *, rest: bool = False) -> Any:
    """The object of class ``cls`` that an archive holds; the bytes need not be trusted.

    For a tuple of classes a tuple of objects, which C++ has stored in one archive, one after
    another. With ``rest`` more may follow, as the names do that a model file has behind its tool;
    it is not looked at.

    Raises ArchiveError for bytes that are no archive of this class from first to last.
    """
    if isinstance(cls, tuple):
        return _core.load_all(data, cls, rest)
    from_bytes = getattr(cls, "from_bytes", None)
    if from_bytes is None:
        raise TypeError(f"{cls.__name__} has no archive")
    return _core.load_all(data, (cls,), rest)[0] if rest else from_bytes(data)
