# SPDX-License-Identifier: MIT
"""A session as a file for other programs. Each holds at most a channel in memory, and takes the place of a file that is
there only when it is whole."""
from __future__ import annotations

import csv
import os
import re
import tempfile
from contextlib import contextmanager
from itertools import chain
from typing import TYPE_CHECKING, Any, Iterator, Sequence

import numpy as np

from . import _frames
from ._session import Channel, Lap, Numbers, Path, Samples, Session

if TYPE_CHECKING:
    import h5py

_ROWS_AT_A_TIME = 8192
_LONGEST_NAME = 60  # MATLAB's limit is 63


@contextmanager
def _whole(session: Session, path: Path) -> Iterator[str]:
    """A path to write to, which becomes `path` if all goes well, and else leaves nothing."""
    target = os.fsdecode(os.fspath(path))
    if os.path.exists(target) and os.path.exists(session.path) and os.path.samefile(target, session.path):
        raise ValueError(f"{target} is the session itself")
    session._handle()
    handle, unfinished = tempfile.mkstemp(dir=os.path.dirname(target) or ".", suffix=".part",
                                          prefix=os.path.basename(target) + ".traguardo-")
    os.close(handle)
    try:
        yield unfinished
        if os.path.exists(target):
            os.chmod(unfinished, os.stat(target).st_mode & 0o777)
        else:
            mask = os.umask(0)
            os.umask(mask)
            os.chmod(unfinished, 0o666 & ~mask)
        os.replace(unfinished, target)
    except BaseException:
        if os.path.exists(unfinished):
            os.unlink(unfinished)
        raise


def _texts(session: Session) -> dict[str, str]:
    info = session.info
    texts = {name: getattr(info, name) for name in ("vehicle", "track", "racer", "championship", "venue_type")}
    return {**texts, "date": info.date.isoformat() if info.date else ""}


def _laps(session: Session) -> "np.ndarray[Any, Any]":
    laps = session.laps
    table = np.zeros(len(laps), dtype=[("lap", "i4"), ("start", "f8"), ("duration", "f8"), ("finished", "i1"),
                                       ("gap", "f8")])
    table["lap"] = laps.index
    for name in laps.columns:
        table[name] = laps[name]
    return table


def _group_name(name: str, taken: set[str]) -> str:
    """A name that a group can have, and none has yet."""
    plain = name.replace("/", "\u2215").replace("\0", "") or "unnamed"
    plain = "_" if plain == "." else plain
    unique, number = plain, 2
    while unique in taken:
        unique, number = f"{plain} ({number})", number + 1
    taken.add(unique)
    return unique


def to_hdf5(session: Session, path: Path) -> None:
    import h5py
    with _whole(session, path) as unfinished, h5py.File(unfinished, "w") as out:
        for name, text in _texts(session).items():
            out.attrs[name] = text.replace("\0", "")
        laps = out.create_dataset("laps", data=_laps(session))
        laps.attrs["unit"] = "s"
        for folder, channels in (("channels", session.channels), ("gps", session.gps)):
            group = out.create_group(folder, track_order=True)
            taken: set[str] = set()
            for channel in channels.values():
                _put_group(group.create_group(_group_name(channel.name, taken)), channel)


def _put_group(group: "h5py.Group", channel: Channel) -> None:
    times, values = channel.times, channel.values
    group.attrs.update({"name": channel.name, "unit": channel.unit, "rate": channel.rate, "held": channel.held})
    group.create_dataset("times", data=times).attrs["unit"] = "s"
    group.create_dataset("values", data=values).attrs["unit"] = channel.unit


def _variable_name(name: str, taken: set[str]) -> str:
    """What a MATLAB variable may be called."""
    plain = re.sub(r"[^A-Za-z0-9]+", "_", name).strip("_")
    if not plain[:1].isalpha():
        plain = "c_" + plain
    plain = plain[:_LONGEST_NAME]
    unique, number = plain, 2
    while unique in taken:
        ending = f"_{number}"
        unique, number = plain[:_LONGEST_NAME - len(ending)] + ending, number + 1
    taken.add(unique)
    return unique


def to_mat(session: Session, path: Path) -> None:
    from scipy.io import savemat
    taken = {"info", "laps"}
    with _whole(session, path) as unfinished, open(unfinished, "wb") as out:
        def put(name: str, value: object) -> None:
            # Behind the first variable of a file another can be put: only one is in memory.
            savemat(out, {name: value}, long_field_names=True, oned_as="column")

        put("info", _texts(session))
        laps = _laps(session)
        put("laps", {name: laps[name].astype(float) for name in laps.dtype.names or ()})
        for channel in chain(session.channels.values(), session.gps.values()):
            put(_variable_name(channel.name, taken),
                {"name": channel.name, "unit": channel.unit, "rate": channel.rate, "times": channel.times,
                 "values": channel.values})


def to_csv(session: Session, path: Path, wide: bool, channels: "Sequence[str | Samples] | None", rate: float | None,
           lap: Lap) -> None:
    chosen = session._chosen(channels)
    with _whole(session, path) as unfinished, open(unfinished, "w", newline="", encoding="utf-8") as out:
        rows = csv.writer(out, lineterminator="\n")
        if wide:
            _put_wide(session, rows, chosen, rate, lap)
        else:
            _put_long(rows, chosen, lap)


def _put_long(rows: Any, chosen: list[Samples], lap: Lap) -> None:
    rows.writerow(["channel", "unit", "time", "value"])
    while chosen:
        channel = chosen.pop(0)  # what was written of a session needn't stay
        samples = channel.lap(lap) if lap is not None and isinstance(channel, Channel) else channel
        times, values = samples.times, samples.values
        for first in range(0, len(times), _ROWS_AT_A_TIME):
            piece = slice(first, first + _ROWS_AT_A_TIME)
            rows.writerows((channel.name, channel.unit, time, value)
                           for time, value in zip(times[piece].tolist(), values[piece].tolist()))


def _put_wide(session: Session, rows: Any, chosen: list[Samples], rate: float | None, lap: Lap) -> None:
    at, start = _frames.time_grid(session, chosen, rate, lap)
    rows.writerow(["time (s)"] + [f"{c.name} ({c.unit})" if c.unit.strip() else c.name for c in chosen])
    with tempfile.TemporaryFile() as beside:
        # Rows need all channels at once, and memory shall hold one: the columns wait in a file.
        columns: list[Numbers] = []
        while chosen and len(at):
            beside.write(_frames.values_at(chosen.pop(0), at, np.empty(len(at))).data)
            columns.append(at)
        beside.flush()
        block = (np.memmap(beside, dtype=np.float64, mode="r", shape=(len(columns), len(at))) if columns
                 else np.empty((0, len(at))))
        for first in range(0, len(at), _ROWS_AT_A_TIME):
            piece = slice(first, first + _ROWS_AT_A_TIME)
            table = np.column_stack((at[piece] - start, *block[:, piece])).tolist()
            rows.writerows(["" if value != value else value for value in row] for row in table)
