# SPDX-License-Identifier: MIT
"""A session as a notebook shows it."""
from __future__ import annotations

from html import escape
from itertools import islice
from typing import TYPE_CHECKING

import numpy as np

if TYPE_CHECKING:
    from ._session import Channel, Numbers, Session

_MOST_CHANNELS = 60
_WIDTH, _HEIGHT = 160, 24
_CELL = ' style="text-align:right"'


def lap_clock(seconds: float) -> str:
    """Minutes, seconds and thousandths.

    >>> lap_clock(74.286), lap_clock(3599.9996), lap_clock(float("nan"))
    ('1:14.286', '60:00.000', '-')
    """
    if not np.isfinite(seconds):
        return "-"
    thousandths = round(abs(seconds) * 1000)
    return f"{'-' if seconds < 0 else ''}{thousandths // 60000}:{thousandths // 1000 % 60:02}.{thousandths % 1000:03}"


def drawing(values: "Numbers") -> str:
    """Lowest and highest value of each pixel's stretch, as one line: little, however long the channel is."""
    values = values[np.isfinite(values)]
    if not len(values):
        return ""
    starts = np.unique(np.linspace(0, len(values), _WIDTH, endpoint=False).astype(int))
    low, high = np.minimum.reduceat(values, starts), np.maximum.reduceat(values, starts)
    bottom, span = float(low.min()), float(high.max() - low.min()) or 1.0
    x = starts * (_WIDTH / len(values))

    def points(edge: "Numbers", order: slice) -> str:
        y = _HEIGHT - 1 - (edge - bottom) / span * (_HEIGHT - 2)
        return " ".join(f"{a:.0f},{b:.1f}" for a, b in zip(x[order], y[order]))

    return (f'<svg width="{_WIDTH}" height="{_HEIGHT}" role="img"><polygon fill="currentColor" fill-opacity="0.35" '
            f'stroke="currentColor" stroke-width="0.8" points="{points(high, slice(None))} '
            f'{points(low, slice(None, None, -1))}"/></svg>')


def _row(channel: "Channel") -> str:
    values = channel.values
    finite = values[np.isfinite(values)]
    bounds = [f"{finite.min():.6g}", f"{finite.max():.6g}"] if len(finite) else ["-", "-"]
    figures = [str(len(values)), f"{channel.rate:g}", *bounds]
    return (f"<tr><td>{escape(channel.name)}</td><td>{escape(channel.unit)}</td>"
            + "".join(f"<td{_CELL}>{figure}</td>" for figure in figures) + f"<td>{drawing(values)}</td></tr>")


def of_session(session: "Session") -> str:
    if session.closed:
        return f"<p>{escape(repr(session))}</p>"
    info = session.info
    texts = [("Vehicle", info.vehicle), ("Track", info.track), ("Racer", info.racer),
             ("Championship", info.championship), ("Venue", info.venue_type),
             ("Date", f"{info.date:%Y-%m-%d %H:%M:%S}" if info.date else "")]
    best = session._best_lap()
    laps = "".join(
        f"<tr><td{_CELL}>{i + 1}</td><td{_CELL}>{start:.3f}</td><td{_CELL}>{lap_clock(duration)}"
        f"{' *' if i == best else '' if finished else ' unfinished'}</td></tr>"
        for i, (start, duration, finished) in enumerate(session._lap_rows))
    more = len(session.channels) - _MOST_CHANNELS
    return (
        f"<div><b>{escape(session.path)}</b><br>"
        + " &middot; ".join(f"{name}: {escape(text)}" for name, text in texts if text)
        + "<div style='display:flex;gap:2em;align-items:flex-start;flex-wrap:wrap'>"
        + (f"<table><thead><tr><th>Lap</th><th>Start (s)</th><th>Time (min:s)</th></tr></thead><tbody>{laps}</tbody>"
           "</table>" if laps else "")
        + "<table><thead><tr><th>Channel</th><th>Unit</th><th>Samples</th><th>Rate (Hz)</th><th>Minimum</th>"
        + "<th>Maximum</th><th></th></tr></thead><tbody>"
        + "".join(_row(channel) for channel in islice(session.channels.values(), _MOST_CHANNELS))
        + (f'<tr><td colspan="7">and {more} more</td></tr>' if more > 0 else "") + "</tbody></table></div></div>")
