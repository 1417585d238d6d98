# SPDX-License-Identifier: MIT
"""Channels on one grid of times or distances, and laps against each other."""
from __future__ import annotations

from typing import TYPE_CHECKING, Sequence

import numpy as np

from ._library import lib
from ._session import Channel, Lap, Numbers, Samples, Session

if TYPE_CHECKING:
    import pandas as pd

MOST_POINTS = 100_000_000  # a day at 1000 Hz has fewer; only a clock that lies asks for more
_DEFAULT_RATE_HZ = 100.0
_TO_METRES_PER_SECOND = {"m/s": 1.0, "km/h": 1 / 3.6, "kmh": 1 / 3.6, "mph": 0.44704, "kn": 1852 / 3600}
_EARTH_RADIUS_M = 6_371_008.8
_SMOOTH = 25  # points of the receiver's 10 ms to either side
_KERNEL = np.ones(2 * _SMOOTH + 1) / (2 * _SMOOTH + 1)


def values_at(samples: Samples, at: Numbers, out: Numbers) -> Numbers:
    """Fills `out` with the values at times that never fall, in seconds: held or on the line between two samples, as the
    channel's record says. A channel of which times fall somewhere (two of one name) is taken in the order of its
    times."""
    times, values = samples._both or samples.read() if isinstance(samples, Channel) else samples.read()
    is_held = isinstance(samples, Channel) and samples.held

    def filled(times: Numbers, values: Numbers) -> bool:
        return bool(lib.tg_values_at(times.ctypes.data, values.ctypes.data, len(times), is_held, at.ctypes.data,
                                     len(at), out.ctypes.data))

    if not filled(times, values):
        order = np.argsort(times, kind="stable")
        filled(times[order], values[order])
    return out


def grid(start: float, end: float, step: float, *, with_end: bool) -> Numbers:
    """start, start + step, ... below `end`, or up to it. A point of a rate lies at a whole multiple of its step."""
    if not step > 0:
        raise ValueError("a rate and a step must be above 0")
    points = (end - start) / step
    if points > MOST_POINTS:
        raise ValueError(f"{end - start:.0f} in steps of {step:g} are more points than a frame can hold")
    count = max(0, int(np.floor(points + 1e-9)) + 1 if with_end else int(np.ceil(points - 1e-9)))
    return start + np.arange(count) / (1 / step)


def fastest(channels: Sequence[Samples]) -> float:
    rates = [channel.rate for channel in channels if isinstance(channel, Channel)]
    return max(rates, default=0.0) or _DEFAULT_RATE_HZ


def time_grid(session: Session, channels: Sequence[Samples], rate: float | None, lap: Lap) -> tuple[Numbers, float]:
    """The times of a frame's rows, and where its axis begins."""
    step = 1 / (fastest(channels) if rate is None else rate) if rate is None or rate > 0 else 0.0
    if lap is not None:
        start, end = session._lap_span(lap)
        return grid(start, end, step, with_end=False), start
    end = max((channel._end() for channel in channels if len(channel)), default=-1.0)
    return grid(0.0, end, step, with_end=True), 0.0


def frame(session: Session, channels: "str | Samples | Sequence[str | Samples] | None", rate: float | None, lap: Lap,
          by: str, step: float) -> "pd.DataFrame":
    import pandas as pd
    chosen = session._chosen(channels)
    names = [channel.name for channel in chosen]
    if by == "time":
        at, start = time_grid(session, chosen, rate, lap)
        index = pd.Index(at - start if start else at, name="time")
        first: list[Numbers] = []
    elif by == "distance":
        times, metres = distance(session, lap)
        places = grid(0.0, float(metres[-1]) if len(metres) else -1.0, step, with_end=True)
        at = np.interp(places, *_strictly_rising(metres, times)) if len(metres) else places
        index = pd.Index(places, name="distance")
        first = [at - (times[0] if lap is not None and len(times) else 0.0)]
        names = ["time", *names]
    else:
        raise ValueError('by must be "time" or "distance"')
    # One block with a column's values side by side: pandas takes it as it is.
    block = np.empty((len(names), len(at)))
    for row, column in zip(block, first):
        row[:] = column
    for row, channel in zip(block[len(first):], chosen):
        values_at(channel, at, row)
    result = pd.DataFrame(block.T, index=index, columns=names, copy=False)
    result.attrs["units"] = {channel.name: channel.unit for channel in chosen}
    return result


def _strictly_rising(x: Numbers, y: Numbers) -> tuple[Numbers, Numbers]:
    """Without the points where x stands still, but the last of each: what stood has left when it moves on."""
    kept = np.append(np.diff(x) > 0, True)
    return x[kept], y[kept]


def speed(session: Session) -> tuple[Numbers, Numbers]:
    """Times (s) and speed (m/s): of the first channel that its record calls a speed, else of the first in a unit of
    speed, else the receiver's."""
    logged = [(channel, _TO_METRES_PER_SECOND.get(channel.unit.strip().casefold(), 0.0))
              for channel in session.channels.values()]
    speeds = [row for row in logged if row[1] > 0]
    found = [row for row in speeds if row[0]._record().speed] or speeds
    for channel, factor in found[:1]:
        return channel.times, channel.values * factor
    if "GPS Speed" in session.gps._names:
        channel = session.gps["GPS Speed"]
        return channel.times, channel.values
    raise ValueError(f"{session.path}: no channel with a speed and no GPS to tell distances by")


def distance(session: Session, lap: Lap) -> tuple[Numbers, Numbers]:
    """Times (s) and metres since the start of the lap, or of the file."""
    times, speeds = speed(session)
    good = np.isfinite(speeds)
    times, speeds = times[good], np.maximum(speeds[good], 0.0)
    if lap is not None:
        start, end = session._lap_span(lap)
        inside = (times > start) & (times < end)
        ends = np.interp([start, end], times, speeds) if len(times) else np.zeros(2)
        times = np.concatenate((np.array([start]), times[inside], np.array([end])))
        speeds = np.concatenate((ends[:1], speeds[inside], ends[1:]))
    if not len(times):
        return times, times
    steps = np.maximum(np.diff(times), 0.0) * (speeds[1:] + speeds[:-1]) / 2
    return times, np.concatenate(([0.0], np.cumsum(steps)))


def _line(session: Session, times: Numbers) -> tuple[Numbers, Numbers] | None:
    """Latitude and longitude in radians at these times; none without GPS."""
    if not {"GPS Latitude", "GPS Longitude"} <= set(session.gps._names):
        return None
    latitude, longitude = session.gps["GPS Latitude"], session.gps["GPS Longitude"]
    return (np.radians(np.interp(times, latitude.times, latitude.values)),
            np.radians(np.interp(times, longitude.times, longitude.values)))


def nearest_places(reference: Numbers, line: Numbers, guess: Numbers, other: Numbers, reach: int) -> Numbers:
    """How far along a line (points of shape (n, 2) at the distances `reference`) each other point lies: at the nearest
    place within `reach` points of where `guess` says that it could be."""
    around = np.searchsorted(reference, guess)[:, None] + np.arange(-reach, reach + 1)[None, :]
    around = np.clip(around, 0, len(line) - 2)
    begin, along = line[around], line[around + 1] - line[around]
    length2 = np.maximum((along ** 2).sum(-1), 1e-12)
    share = np.clip(((other[:, None, :] - begin) * along).sum(-1) / length2, 0.0, 1.0)
    apart2 = ((begin + share[..., None] * along - other[:, None, :]) ** 2).sum(-1)
    best = apart2.argmin(1)
    rows = np.arange(len(other))
    place = around[rows, best]
    along_line: Numbers = reference[place] + share[rows, best] * (reference[place + 1] - reference[place])
    return along_line


def _as_flat(latitude: Numbers, longitude: Numbers, centre: tuple[float, float]) -> Numbers:
    east = (longitude - centre[1]) * np.cos(centre[0]) * _EARTH_RADIUS_M
    return np.column_stack((east, (latitude - centre[0]) * _EARTH_RADIUS_M))


def _other_place(session: Session, lap_times: Numbers, metres: Numbers, other: Session, other_times: Numbers,
                 scaled: Numbers) -> Numbers:
    """Where on this lap the other car is at each of its times."""
    line, other_line = _line(session, lap_times), _line(other, other_times)
    if line is None or other_line is None:
        return scaled
    centre = float(line[0].mean()), float(line[1].mean())
    every = max(1, int(len(metres) // max(metres[-1], 1.0)))  # about a point a metre is enough of a line
    reach = int(np.ceil(60 / max(metres[-1] / len(metres[::every]), 0.05)))
    places = nearest_places(metres[::every], _as_flat(*line, centre)[::every], scaled, _as_flat(*other_line, centre),
                            reach)
    # A receiver's place jitters by decimetres; how far two lines are apart changes slowly.
    apart = places - scaled
    apart[0] = apart[-1] = 0.0  # both laps begin and end at the line
    apart = np.convolve(np.pad(apart, _SMOOTH, mode="reflect", reflect_type="odd"), _KERNEL, mode="valid")
    return np.maximum.accumulate(np.clip(scaled + apart, 0.0, metres[-1]))


def compare(session: Session, other: Session, lap: Lap, other_lap: Lap, step: float) -> "pd.DataFrame":
    import pandas as pd
    times, metres = distance(session, lap)
    other_times, other_metres = distance(other, other_lap)
    for of, name, driven in ((session, lap, metres), (other, other_lap, other_metres)):
        if not len(driven) or not driven[-1] > 0:
            raise ValueError(f"{of.path}: lap {name} has no distance")
    scaled = other_metres * (metres[-1] / other_metres[-1])
    place = _other_place(session, times, metres, other, other_times, scaled)
    places = grid(0.0, float(metres[-1]), step, with_end=True)
    at = np.interp(places, *_strictly_rising(metres, times))
    other_at = np.interp(places, *_strictly_rising(place, other_times))
    result = pd.DataFrame({
        "time": at - times[0],
        "other_time": other_at - other_times[0],
        "delta": (other_at - other_times[0]) - (at - times[0]),
        "speed": np.interp(at, *speed(session)),
        "other_speed": np.interp(other_at, *speed(other)),
    }, index=pd.Index(places, name="distance"))
    result.attrs["units"] = {"time": "s", "other_time": "s", "delta": "s", "speed": "m/s", "other_speed": "m/s"}
    return result
