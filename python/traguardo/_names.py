# SPDX-License-Identifier: MIT
"""Channels as people name them."""
from __future__ import annotations

import difflib
import re
from typing import Sequence


def _pattern(wanted: str) -> re.Pattern[str]:
    parts = {"*": ".*", "?": "."}
    return re.compile("".join(parts.get(c, re.escape(c)) for c in wanted.casefold()), re.DOTALL)


def matching(wanted: str, names: Sequence[str]) -> list[int]:
    """The indexes that a name can mean, by the first rule that finds any: the name itself (of equal ones the first),
    `#N`, the name in another case, a pattern of `*` and `?`, a part of it.

    >>> names = ["Speed", "GPS Speed", "Oil Temp", "Oil Press", "Speed"]
    >>> matching("Speed", names), matching("#3", names), matching("gps speed", names)
    ([0], [3], [1])
    >>> matching("Oil*", names), matching("press", names), matching("RPM", names)
    ([2, 3], [3], [])
    """
    if wanted in names:
        return [names.index(wanted)]
    number = re.fullmatch(r"#(\d+)", wanted)
    if number is not None and int(number[1]) < len(names):
        return [int(number[1])]
    folded = [name.casefold() for name in names]
    part = wanted.casefold()
    found = [i for i, name in enumerate(folded) if name == part]
    if not found and ("*" in wanted or "?" in wanted):
        found = [i for i, name in enumerate(folded) if _pattern(wanted).fullmatch(name)]
    elif not found and part:
        found = [i for i, name in enumerate(folded) if part in name]
    return found


def only_one(wanted: str, names: Sequence[str]) -> int:
    """The one index that a name means. LookupError, with words for a person, where it is none or several.

    >>> only_one("oil t", ["Oil Temp", "Oil Press"])
    0
    >>> only_one("oil", ["Oil Temp", "Oil Press"])
    Traceback (most recent call last):
    LookupError: "oil" could be "Oil Temp" or "Oil Press"
    >>> only_one("Sped", ["Speed", "Gear"])
    Traceback (most recent call last):
    LookupError: no channel "Sped"; did you mean "Speed"?
    """
    found = matching(wanted, names)
    different = {names[i] for i in found}
    if len(different) == 1:
        return found[0]
    if found:
        raise LookupError(f'"{wanted}" could be {_listed([names[i] for i in found], 12)}')
    raise LookupError(f'no channel "{wanted}"' + question(nearest(wanted, names)))


def question(near: Sequence[str]) -> str:
    return f"; did you mean {_listed(near, 3)}?" if near else ""


def nearest(wanted: str, names: Sequence[str]) -> list[str]:
    """The three names that come nearest, the nearest first."""
    part = wanted.casefold()
    folded: dict[str, str] = {}
    for name in names:
        folded.setdefault(name.casefold(), name)
    return [folded[name] for name in difflib.get_close_matches(part, folded, n=3, cutoff=0.3)]


def _listed(names: Sequence[str], most: int) -> str:
    shown = [f'"{name}"' for name in dict.fromkeys(names)]
    if len(shown) > most:
        shown = shown[:most] + [f"{len(shown) - most} more"]
    return shown[0] if len(shown) == 1 else ", ".join(shown[:-1]) + " or " + shown[-1]
