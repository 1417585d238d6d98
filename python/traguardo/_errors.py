# SPDX-License-Identifier: MIT
"""What can go wrong, each with the file and the reason."""
from __future__ import annotations


class Error(Exception):
    """Of this package. `path` is the session file, `reason` a few words."""

    def __init__(self, path: str, reason: str) -> None:
        super().__init__(path, reason)
        self.path = path
        self.reason = reason

    def __str__(self) -> str:
        return f"{self.path}: {self.reason}"


class NoSuchFile(Error, FileNotFoundError):
    """The session file, or the trace file that belongs to it, doesn't exist."""


class NotReadable(Error, OSError):
    """No permission, no plain file, or the disk failed."""


class UnknownKind(Error, ValueError):
    """No .qlt, .qlc or .wmp."""


class NoSession(Error, ValueError):
    """The file was read, but there is no session in it."""


class NoStorePlace(Error, OSError):
    """No room or no place for the samples while the session is open."""


class OutOfMemory(Error, MemoryError):
    """The session needs more memory than there is."""


class SessionClosed(Error, ValueError):
    """The session was used after it was closed."""


class NoSuchLap(Error, KeyError):
    """No lap of this number."""


class NoSuchChannel(Error, KeyError):
    """No channel of this name, or several that it could mean."""


class FormulaError(Error, ValueError):
    """A formula that can't be computed. `position` is the character where it goes wrong, from 0."""

    def __init__(self, path: str, reason: str, formula: str, position: int) -> None:
        super().__init__(path, reason)
        self.formula = formula
        self.position = position

    def __str__(self) -> str:
        return f"{super().__str__()}\n  {self.formula}\n  {' ' * self.position}^"
