# SPDX-License-Identifier: MIT
"""An open session, its channels and their samples."""
from __future__ import annotations

import ctypes
import datetime
import os
import re
import tempfile
import threading
import warnings
import weakref
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, ItemsView, Iterator, Mapping, NamedTuple, Sequence, Union, ValuesView

import numpy as np
import numpy.typing as npt

from . import _arrow, _errors, _names
from ._library import FUNCTIONS, GPS, LOGGED, RAW_GPS, lib, text_of, unit_of

if TYPE_CHECKING:
    from . import _page
    import pandas as pd

Numbers = npt.NDArray[np.float64]
Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
Lap = Union[int, str, None]

_FAILURES: dict[int, tuple[type[_errors.Error], str]] = {
    1: (_errors.NoSuchFile, "no such file"),
    2: (_errors.NotReadable, "it can't be read"),
    3: (_errors.UnknownKind, "not a kind of session file that can be read (.qlt, .qlc, .wmp)"),
    4: (_errors.NoSession, "no session can be read from it"),
    5: (_errors.NoStorePlace, "no room or no place for its samples in {folder}"),
    6: (_errors.OutOfMemory, "out of memory"),
}

_UNKNOWN_NAME = 102  # the formula language's own number for it


class Samples:
    """Times and values: a channel, a lap of one, or what a formula gave."""

    def __init__(self, name: str, unit: str, times: Numbers, values: Numbers) -> None:
        self.name = name
        self.unit = unit
        self._times = times
        self._values = values

    @property
    def times(self) -> Numbers:
        """Seconds from the start of the file; shape (samples,)."""
        return self._times

    @property
    def values(self) -> Numbers:
        """In `unit`; shape (samples,). What the logger meant is a 32-bit float, widened."""
        return self._values

    def read(self) -> tuple[Numbers, Numbers]:
        """Times and values."""
        return self.times, self.values

    def _end(self) -> float:
        return float(self.times.max())

    def __len__(self) -> int:
        return len(self.times)

    def __repr__(self) -> str:
        unit = f" ({self.unit})" if self.unit else ""
        return f"<{self.name}{unit}: {len(self)} samples>"

    def to_series(self) -> "pd.Series[float]":
        """A pandas Series of the values over their times in seconds; `attrs["unit"]` has the unit."""
        import pandas as pd
        series = pd.Series(self.values, index=pd.Index(self.times, name="time"), name=self.name)
        series.attrs["unit"] = self.unit
        return series

    def __arrow_c_array__(self, requested_schema: object = None) -> tuple[object, object]:
        """A struct array of "time" (s) and "value", 64-bit floats without nulls."""
        return _arrow.samples_as_array(self.times, self.values, self.name, self.unit)


class _Record(NamedTuple):
    rate: float
    end: float
    held: bool
    speed: bool


class Channel(Samples):
    """A channel of an open session. Samples are read when they are first asked for, and kept as long as the channel is.

    >>> ch = session.channels["Speed"]
    >>> ch
    <Speed (km/h): 23130 samples>
    >>> ch.unit, ch.rate, ch.held, ch.times.shape, ch.values.dtype
    ('km/h', 100.0, False, (23130,), dtype('float64'))
    """

    def __init__(self, session: "Session", kind: int, index: int, name: str, unit: str) -> None:
        self.name = name
        self.unit = unit
        self.kind = kind
        self.index = index
        self.session = session
        self._both: tuple[Numbers, Numbers] | None = None

    def read(self) -> tuple[Numbers, Numbers]:
        """Times (s) and values (in `unit`), read anew into two arrays of shape (samples,) that are the caller's."""
        times, values = self._filled(FUNCTIONS[self.kind].samples_count, FUNCTIONS[self.kind].samples, ())
        if self.kind == GPS:
            times /= 1000  # milliseconds in this one function
        return times, values

    @property
    def times(self) -> Numbers:
        """Seconds from the start of the file; shape (samples,), not to be written to."""
        return self._kept()[0]

    @property
    def values(self) -> Numbers:
        """In `unit`; shape (samples,), not to be written to. What the logger meant is a 32-bit float, widened."""
        return self._kept()[1]

    def lap(self, lap: Lap) -> Samples:
        """The samples of a lap, by its number in `Session.laps` or "best"; times stay those of the file.

        >>> session.channels["Speed"].lap(2)
        <Speed (km/h): 7429 samples>
        """
        of = FUNCTIONS[self.kind]
        index = self.session._lap_index(lap)
        return Samples(self.name, self.unit, *self._filled(of.lap_samples_count, of.lap_samples, (index,)))

    @property
    def rate(self) -> float:
        """Samples a second, in Hz: what the channel's record says, else their mean distance; 0 for fewer than two."""
        if self.kind == GPS:
            return 100.0
        recorded = self._record().rate
        if recorded > 0 or len(self) < 2:
            return recorded
        span = float(self.times[-1] - self.times[0])
        return (len(self) - 1) / span if span > 0 else 0.0

    @property
    def held(self) -> bool:
        """Whether a value holds until the next one, as a gear does; else values between samples lie on a line."""
        if self.kind == LOGGED:
            return self._record().held
        # A count has nothing in between, and a heading goes from 360 to 0.
        return self.unit == "#" or self.name == "GPS Heading"

    def __len__(self) -> int:
        if self._both is not None:
            return len(self._both[0])
        return max(0, self._checked(FUNCTIONS[self.kind].samples_count(self.session._handle(), self.index)))

    def _record(self) -> "_Record":
        rate, end, held, speed = ctypes.c_double(), ctypes.c_double(), ctypes.c_int(), ctypes.c_int()
        if self.kind == LOGGED:
            lib.tg_channel_record(self.session._handle(), self.index, rate, end, held, speed)
        return _Record(rate.value, end.value, bool(held.value), bool(speed.value))

    def _end(self) -> float:
        """The time of the last sample, without reading them where that can be told."""
        if self.kind == LOGGED and self._both is None:
            return self._record().end
        return (len(self) - 1) / 100 if self.kind == GPS else float(self.times.max())

    def _kept(self) -> tuple[Numbers, Numbers]:
        if self._both is None:
            times, values = self.read()
            times.flags.writeable = values.flags.writeable = False
            self._both = times, values
        return self._both

    def _checked(self, result: int) -> int:
        if result < 0:
            self.session._handle()  # another thread may have closed it
            raise _errors.NotReadable(self.session.path, f'the samples of "{self.name}" can\'t be read')
        return result

    def _filled(self, count_of: Any, fill: Any, lap: tuple[int, ...]) -> tuple[Numbers, Numbers]:
        handle = self.session._handle()
        count = self._checked(count_of(handle, *lap, self.index))
        times, values = np.empty(count), np.empty(count)
        if count:
            written = self._checked(fill(handle, *lap, self.index, times.ctypes.data, values.ctypes.data, count))
            if written != count:
                self._checked(-1)
        return times, values


class _Values(ValuesView["Channel"]):
    _mapping: "Channels"

    def __iter__(self) -> Iterator[Channel]:
        return self._mapping._each()


class _Items(ItemsView[str, "Channel"]):
    _mapping: "Channels"

    def __iter__(self) -> Iterator[tuple[str, Channel]]:
        return ((channel.name, channel) for channel in self._mapping._each())


class Channels(Mapping[str, Channel]):
    """Channels by name, in the library's order. `values()` and `items()` give every channel, also those of equal
    names; a name gives the first. Names are taken as people write them: the exact one, else in any case, with `*` and
    `?`, or a part that only one has; `#3` is the channel of that index.

    >>> list(session.channels)[:3], len(session.channels)
    (['Engine RPM', 'Gear', 'Throttle'], 27)
    >>> session.channels["engine rpm"].index, session.channels["oil t"].name, session.channels["#3"].name
    (0, 'Oil Temp', 'Speed')
    >>> session.channels["Sped"]
    Traceback (most recent call last):
    traguardo._errors.NoSuchChannel: demo.qlt: no channel "Sped"; did you mean "Speed", "Suspension FL" or "Switches"?
    """

    def __init__(self, session: "Session", rows: Sequence[tuple[int, int, str, str]]) -> None:
        self._session = session
        self._rows = rows
        self._names = [row[2] for row in rows]

    def __getitem__(self, name: str) -> Channel:
        try:
            return self._at(_names.only_one(name, self._names))
        except LookupError as error:
            raise _errors.NoSuchChannel(self._session.path, str(error)) from None

    def __iter__(self) -> Iterator[str]:
        return iter(self._names)

    def __len__(self) -> int:
        return len(self._rows)

    def values(self) -> ValuesView[Channel]:
        return _Values(self)

    def items(self) -> ItemsView[str, Channel]:
        return _Items(self)

    def __repr__(self) -> str:
        return f"<{len(self)} channels: {', '.join(self._names[:5])}{', ...' if len(self) > 5 else ''}>"

    def __arrow_c_stream__(self, requested_schema: object = None) -> object:
        """Batches of "channel", "unit" (dictionaries of texts), "time" (s) and "value": one for each channel that has
        samples, read when it is asked for. The file stays open until the stream is released."""
        return _arrow.channels_as_stream(self._session._handle(), list(self.values()))

    def _at(self, index: int) -> Channel:
        return Channel(self._session, *self._rows[index])

    def _each(self) -> Iterator[Channel]:
        return (self._at(i) for i in range(len(self._rows)))


@dataclass(frozen=True)
class Info:
    """The texts of a session; empty where the file says nothing. `date` is the logger's local time."""

    path: str
    vehicle: str
    track: str
    racer: str
    championship: str
    venue_type: str
    date: datetime.datetime | None


class _OpenPaths:
    """The library takes one path for one file. Each session has its own, so a second spelling is found for a second."""

    def __init__(self) -> None:
        # A session that is collected in the middle of `take` gives its path back in the same thread.
        self._lock = threading.RLock()
        self._taken: set[bytes] = set()

    def take(self, path: bytes) -> bytes:
        folder, name = os.path.split(path)
        with self._lock:
            while path in self._taken:
                folder = os.path.join(folder or b".", b".")
                path = os.path.join(folder, name)
            self._taken.add(path)
        return path

    def give_back(self, path: bytes) -> None:
        with self._lock:
            self._taken.discard(path)


_open_paths = _OpenPaths()


def _let_go(handle: int, path: bytes) -> None:
    lib.tg_close(handle)
    if lib.get_laps_count(handle) == -1:  # else an Arrow stream keeps the file open under this spelling
        _open_paths.give_back(path)


def _store_folder(path: bytes) -> bytes | None:
    folder = os.path.dirname(path) or b"."
    return None if lib.tg_can_make_files_in(folder) else os.fsencode(tempfile.gettempdir())


def _reason(path: bytes, failure: int, folder: bytes) -> _errors.Error:
    shown = os.fsdecode(path)
    if path[-4:].lower() == b".wmp" and os.path.exists(path):
        room = ctypes.create_string_buffer(len(path) + 16)
        lib.tg_trace_path(path, room, len(room))
        if not os.path.exists(room.value):
            return _errors.NoSuchFile(shown, f"its trace file is missing, which was sought as "
                                             f"{os.fsdecode(room.value)}")
    kind, text = _FAILURES.get(failure, _FAILURES[2])
    named = os.environb.get(b"TRAGUARDO_STORE_FOLDER") if os.supports_bytes_environ else None
    return kind(shown, text.format(folder=os.fsdecode(named or folder)))


def _opened(path: bytes, spelling: bytes, recover: bool) -> int:
    # The reader of the older family leaves a copy beside the session. Nobody asked for it here.
    copy = path[:-3] + b"bak" if path[-4:].lower() == b".wmp" else b""
    copy_is_new = bool(copy) and not os.path.lexists(copy)
    folder = _store_folder(path)
    failure = ctypes.c_int()
    handle: int = lib.tg_open(spelling, recover, folder, failure)
    if copy_is_new and os.path.exists(copy):
        os.unlink(copy)
    if handle <= 0:
        raise _reason(path, failure.value, folder or os.path.dirname(path) or b".")
    return handle


class Session:
    """An open session file; see `open`. Any thread may use it: calls on one session wait for each other, calls on
    different ones run side by side, and none holds the interpreter's lock while the library works."""

    def __init__(self, path: Path, *, recover: bool = False) -> None:
        name = os.fsencode(path)
        if b"\0" in name:
            raise ValueError("a path can't have a NUL in it")
        self.path: str = os.fsdecode(name)
        self._recover = recover
        self._lock = threading.RLock()
        spelling = _open_paths.take(name)
        try:
            handle = _opened(name, spelling, recover)
        except BaseException:
            _open_paths.give_back(spelling)
            raise
        self._open_handle = handle
        self._finalizer = weakref.finalize(self, _let_go, handle, spelling)
        # What texts the library shows are gone when the file is closed, so they are all taken now.
        self.info = self._read_info()
        self._lap_rows = self._read_laps()
        self._rows_of = {LOGGED: self._rows(LOGGED)}

    # --- Open and closed

    def close(self) -> None:
        """Closes the file and removes what was kept for it. A second time does nothing."""
        with self._lock:
            self._finalizer()

    @property
    def closed(self) -> bool:
        return not self._finalizer.alive

    def __enter__(self) -> "Session":
        self._handle()
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __del__(self) -> None:
        finalizer = getattr(self, "_finalizer", None)
        if finalizer is not None and finalizer.alive:
            warnings.warn(f"unclosed session {self.path}", ResourceWarning, stacklevel=2)

    def _handle(self) -> int:
        if self.closed:
            raise _errors.SessionClosed(self.path, "the session is closed")
        return self._open_handle

    # --- What is in it

    @property
    def laps(self) -> "pd.DataFrame":
        """One row a lap, by its number from 1: `start` and `duration` in seconds, whether it was `finished`, and its
        `gap` to the best finished one in seconds, which is not a number for one that wasn't.

        >>> session.laps.round(3)
               start  duration  finished    gap
        lap
        1      0.000    80.637      True  6.351
        2     80.637    74.286      True  0.000
        3    154.923    74.373      True  0.087
        """
        import pandas as pd
        rows = self._lap_rows
        best = self._best_lap()
        return pd.DataFrame({
            "start": [row[0] for row in rows],
            "duration": [row[1] for row in rows],
            "finished": [row[2] for row in rows],
            "gap": [row[1] - rows[best][1] if row[2] and best is not None else np.nan for row in rows],
        }, index=pd.RangeIndex(1, len(rows) + 1, name="lap"))

    @property
    def channels(self) -> Channels:
        """The logged channels by name."""
        return self._mapping(LOGGED)

    @property
    def gps(self) -> Channels:
        """The channels worked out from the receiver's solutions, one sample every 10 ms; none without GPS."""
        return self._mapping(GPS)

    @property
    def raw_gps(self) -> Channels:
        """Position and velocity as the receiver gave them, earth-centred, and the satellites; none without GPS."""
        return self._mapping(RAW_GPS)

    def __getitem__(self, name: str) -> Channel:
        """A channel by name: logged, else derived GPS, else raw GPS; see `Channels` for how names are taken."""
        if name in self.channels._names:
            return self.channels[name]
        everything = [row for kind in (LOGGED, GPS, RAW_GPS) for row in self._mapping(kind)._rows]
        return Channels(self, everything)[name]

    def __repr__(self) -> str:
        if self.closed:
            return f"<session {self.path}, closed>"
        return f"<session {self.path}: {len(self._lap_rows)} laps, {len(self._rows_of[LOGGED])} channels>"

    # --- What is made of it

    def frame(self, channels: "str | Samples | Sequence[str | Samples] | None" = None, *, rate: float | None = None,
              lap: Lap = None, by: str = "time", step: float = 1.0) -> "pd.DataFrame":
        """Channels side by side on one even grid: a row every 1 / `rate` seconds, or `by="distance"` every `step`
        metres; a column a channel, held or on the line between two samples as its record says. Not a number before
        a channel's first sample, and behind the last one of a channel that isn't held. A name with `*` or `?` stands
        for all that it fits. Without channels: all logged ones; without a rate: the fastest among them.

        With a lap (its number, or "best") times and metres count from its start. `attrs["units"]` has the units; by
        distance, the first column is "time" in seconds.

        >>> session.frame(["Speed", "Gear"], rate=2, lap="best").head(3)
                   Speed  Gear
        time
        0.0   211.095346   5.0
        0.5   213.720734   5.0
        1.0   216.226009   5.0
        """
        from . import _frames
        return _frames.frame(self, channels, rate, lap, by, step)

    def eval(self, formula: str, *, rate: float | None = None) -> Samples:
        """A formula over logged channels, at k / `rate` seconds over the whole session (default: the fastest channel).

        >>> session.eval("Speed / 3.6", rate=50)
        <Speed / 3.6: 11600 samples>
        >>> session.eval("Speed / Sped")  # doctest: +ELLIPSIS
        Traceback (most recent call last):
        traguardo._errors.FormulaError: demo.qlt: ... unknown; did you mean "Speed", "Suspension FL" or "Switches"?
          Speed / Sped
                  ^
        """
        if rate is None:
            rate = max((channel._record().rate for channel in self.channels.values()), default=0.0) or 100.0
        count = lib.tg_formula_points(self._handle(), rate)
        if count < 0:
            raise ValueError(f"{rate} Hz over {self.path} are more points than a formula can have, or none")
        values = np.empty(count, dtype=np.float32)
        position = ctypes.c_int()
        message = ctypes.create_string_buffer(512)
        code = lib.tg_formula(self._handle(), self._as_in_file(formula), rate, values.ctypes.data, count, position,
                              message, len(message))
        if code < 0:
            self._handle()
            raise MemoryError
        if code:
            reason = text_of(message.value)
            if code == _UNKNOWN_NAME:
                # What stands there up to the next operator was meant for the name of a channel.
                meant = re.split(r"[-+*/^()<>=!&|,;]", formula[position.value:], maxsplit=1)[0].strip()
                reason += _names.question(_names.nearest(meant, [row[2] for row in self._rows_of[LOGGED]]))
            raise _errors.FormulaError(self.path, reason, formula, position.value)
        step = round(1e6 / rate)
        return Samples(formula, "", np.arange(count) * step * 1e-6, values.astype(np.float64))

    def compare(self, other: "Session", *, lap: Lap = "best", other_lap: Lap = "best",
                step: float = 1.0) -> "pd.DataFrame":
        """A lap of this session against one of another, or of the same, every `step` metres of this one: `time` and
        `other_time` in seconds from the start of each lap, `delta` = `other_time` - `time` (above 0 where the other is
        behind), `speed` and `other_speed` in m/s. Laps are laid on each other by distance scaled to this one's; where
        both have GPS, by the nearest place on this one's line.

        >>> session.compare(session, lap=3, other_lap=2).iloc[-1].round(2)["delta"]
        -0.09
        """
        from . import _frames
        return _frames.compare(self, other, lap, other_lap, step)

    def to_hdf5(self, path: Path) -> None:
        """Writes an HDF5 file, replacing one that is there only when it is whole; see docs/export.md."""
        from . import _files
        _files.to_hdf5(self, path)

    def to_mat(self, path: Path) -> None:
        """Writes a MATLAB file of version 5, replacing one that is there only when it is whole; see docs/export.md."""
        from . import _files
        _files.to_mat(self, path)

    def to_csv(self, path: Path, *, wide: bool = True, channels: "Sequence[str | Samples] | None" = None,
               rate: float | None = None, lap: Lap = None) -> None:
        """Writes comma-separated values: `wide`, the rows of `frame`; else a line for every sample of every channel."""
        from . import _files
        _files.to_csv(self, path, wide, channels, rate, lap)

    def page(self, path: Path, *, channels: "str | Sequence[str] | None" = None,
             laps: "Lap | Sequence[Lap]" = None) -> None:
        """Writes one page for a browser, as `traguardo page` does, which it calls; see docs/page.md. Channels by names
        or patterns, laps by number, as "3-7", or "best"; without them: all."""
        from . import _page
        _page.write(self, path, channels, laps)

    def show(self, *, channels: "str | Sequence[str] | None" = None, laps: "Lap | Sequence[Lap]" = None,
             height: int = 900) -> "_page.Shown":
        """The same page in a notebook, so many pixels high."""
        from . import _page
        return _page.shown(self, channels, laps, height)

    def __arrow_c_stream__(self, requested_schema: object = None) -> object:
        """Batches of "channel", "unit", "time" (s) and "value", one for each logged channel; see `Channels`."""
        return self.channels.__arrow_c_stream__(requested_schema)

    def _repr_html_(self) -> str:
        from . import _html
        return _html.of_session(self)

    # --- Inside

    def _read_info(self) -> Info:
        def text(name: str) -> str:
            return text_of(getattr(lib, f"get_{name}_name")(self._open_handle))

        place = lib.get_date_and_time(self._open_handle)
        date = None
        if place:
            second, minute, hour, day, month, year = (ctypes.c_int * 6).from_address(place)
            try:
                date = datetime.datetime(year + 1900, month + 1, day, hour, minute, second)
            except ValueError:
                pass  # the logger had none
        return Info(self.path, text("vehicle"), text("track"), text("racer"), text("championship"), text("venue_type"),
                    date)

    def _read_laps(self) -> list[tuple[float, float, bool]]:
        rows = []
        start, duration = ctypes.c_double(), ctypes.c_double()
        for i in range(lib.get_laps_count(self._open_handle)):
            is_there = lib.get_lap_info(self._open_handle, i, start, duration) == 1
            rows.append((start.value, duration.value, bool(lib.tg_lap_finished(self._open_handle, i))) if is_there
                        else (np.nan, np.nan, False))
        return rows

    def _rows(self, kind: int) -> list[tuple[int, int, str, str]]:
        of, handle = FUNCTIONS[kind], self._handle()
        count = of.channels_count(handle)
        # A trace without a single good record lists its channels, but none of them can be asked for.
        if kind != LOGGED and (count <= 0 or of.samples_count(handle, 0) <= 0):
            return []
        return [(kind, i, text_of(of.name(handle, i)), unit_of(of.units(handle, i))) for i in range(count)]

    def _mapping(self, kind: int) -> Channels:
        with self._lock:
            self._handle()
            if kind not in self._rows_of:
                self._rows_of[kind] = self._rows(kind)
            return Channels(self, self._rows_of[kind])

    def _best_lap(self) -> int | None:
        finished = [(row[1], i) for i, row in enumerate(self._lap_rows) if row[2] and row[1] > 0]
        return min(finished)[1] if finished else None

    def _lap_index(self, lap: Lap) -> int:
        index = self._best_lap() if lap == "best" else lap - 1 if isinstance(lap, (int, np.integer)) else None
        if index is None or not 0 <= index < len(self._lap_rows):
            raise _errors.NoSuchLap(self.path, f"no lap {lap}; there are {len(self._lap_rows)}"
                                               f"{', none of them finished' if lap == 'best' else ''}")
        return index

    def _lap_span(self, lap: Lap) -> tuple[float, float]:
        start, duration, _ = self._lap_rows[self._lap_index(lap)]
        return start, start + duration

    def _chosen(self, channels: "str | Samples | Sequence[str | Samples] | None") -> list[Samples]:
        if channels is None:
            return list(self.channels.values())
        chosen: list[Samples] = []
        for channel in [channels] if isinstance(channels, (str, Samples)) else channels:
            if isinstance(channel, Samples):
                chosen.append(channel)
            elif channel not in self.channels._names and ("*" in channel or "?" in channel):
                everything = Channels(self, [row for kind in (LOGGED, GPS) for row in self._mapping(kind)._rows])
                found = _names.matching(channel, everything._names)
                chosen += [everything._at(i) for i in found] or [everything[channel]]
            else:
                chosen.append(self[channel])
        return chosen

    def _as_in_file(self, formula: str) -> bytes:
        """Where the bytes of a name are no UTF-8, a formula names the channel by those."""
        raw = formula.encode()
        for _, index, name, _ in self._rows_of[LOGGED]:
            in_file = FUNCTIONS[LOGGED].name(self._handle(), index)
            if in_file and in_file != name.encode():
                raw = raw.replace(name.encode(), in_file)
        return raw


def open(path: Path, *, recover: bool = False) -> Session:
    """Opens a session file (.qlt, .qlc, .wmp). `recover` takes back a clock that all behind it contradict.

    >>> import traguardo
    >>> with traguardo.open("demo.qlt") as s:
    ...     print(s.info.track, len(s.laps), s.channels["Speed"].values.max().round(2))
    Valle Lunga Vecchia 3 223.64
    >>> traguardo.open("nothing.qlt")
    Traceback (most recent call last):
    traguardo._errors.NoSuchFile: nothing.qlt: no such file
    """
    return Session(path, recover=recover)
