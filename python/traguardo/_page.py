# SPDX-License-Identifier: MIT
"""A session as one page for a browser. The command-line tool writes it: the one that TRAGUARDO_TOOL names, or the
`traguardo` of the path."""
from __future__ import annotations

import os
import shutil
import subprocess
import tempfile
from html import escape
from typing import TYPE_CHECKING, Sequence, Union

from . import _errors

if TYPE_CHECKING:
    from ._session import Lap, Path, Session

Laps = Union["Lap", Sequence["Lap"]]

_PREFIX = "traguardo: "


def _several(one_or_more: "str | int | Sequence[Lap] | None") -> "list[Lap]":
    if one_or_more is None:
        return []
    return [one_or_more] if isinstance(one_or_more, (str, int)) else list(one_or_more)


def write(session: "Session", path: "Path", channels: "str | Sequence[str] | None", laps: "Laps") -> None:
    session._handle()
    tool = os.environ.get("TRAGUARDO_TOOL") or shutil.which("traguardo")
    if tool is None:
        raise _errors.Error(session.path, "a page is written by the tool traguardo, which isn't on the path")
    options = [f"--channels={name}" for name in _several(channels)] + [f"--laps={lap}" for lap in _several(laps)]
    if session._recover:
        options.append("--recover")
    call = [tool, "page", *options, "-o", os.path.abspath(os.fsdecode(path)), "--", os.path.abspath(session.path)]
    done = subprocess.run(call, capture_output=True, text=True, errors="replace", check=False)
    if done.returncode:
        raise _errors.Error(session.path, done.stderr.strip().removeprefix(_PREFIX))


class Shown:
    """What a notebook shows: the page in a frame of its own."""

    def __init__(self, page: str, height: int) -> None:
        self._page = page
        self._height = height

    def _repr_html_(self) -> str:
        return (f'<iframe sandbox="allow-scripts" width="100%" height="{self._height}" style="border:0" '
                f'title="Session" srcdoc="{escape(self._page)}"></iframe>')


def shown(session: "Session", channels: "str | Sequence[str] | None", laps: "Laps", height: int) -> Shown:
    with tempfile.TemporaryDirectory(prefix="traguardo-") as folder:
        path = os.path.join(folder, "page.html")
        write(session, path, channels, laps)
        with open(path, encoding="utf-8") as page:
            return Shown(page.read(), height)
