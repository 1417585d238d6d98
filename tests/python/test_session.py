# SPDX-License-Identifier: MIT
"""The package against the library, and against what its documents say."""
import doctest
import gc
import importlib
import io
import json
import os
import re
import shutil
import subprocess
import sys
import threading
import warnings
from pathlib import Path

import numpy as np
import pandas as pd
import pytest

import traguardo
from traguardo import _frames

SESSIONS = Path(__file__).resolve().parent.parent / "sessions"
sys.path.insert(0, str(SESSIONS))
import host  # noqa: E402

MODULES = ["_names", "_session", "_html", "fleet"]


@pytest.mark.parametrize("module", MODULES)
def test_docstrings_show_what_happens(module, demo, monkeypatch):
    monkeypatch.chdir(os.path.dirname(demo))
    named = importlib.import_module("traguardo." + module)
    with traguardo.open("demo.qlt") as session:
        names = {**vars(named), "session": session}
        result = doctest.testmod(named, extraglobs=names, optionflags=doctest.NORMALIZE_WHITESPACE)
    assert result.attempted > 0 and result.failed == 0


def same(shown, expected):
    """Bit for bit, of a host's dump."""
    got = [host.number(float(x)) for x in shown]
    return len(got) == len(expected) and all(repr(a) == repr(b) for a, b in zip(got, expected))


@pytest.mark.parametrize("kind", ["logger", "legacy", "gps"])
def test_values_are_the_librarys_own_bit_for_bit(kind, tmp_path, monkeypatch):
    library = host.Library(os.environ["TRAGUARDO_LIBRARY"])
    compared = 0
    for source in sorted(f for f in (SESSIONS / kind).iterdir() if f.suffix in (".qlt", ".qlc", ".wmp")):
        folder = tmp_path / source.name
        folder.mkdir()
        for beside in source.parent.glob(source.stem + ".*"):
            shutil.copy(beside, folder)
        monkeypatch.setenv("TRAGUARDO_HOME", str(folder))
        path = str(folder / source.name)
        expected = host.dump(library, path)
        if expected["open"] != "handle":
            with pytest.raises(traguardo.Error):
                traguardo.open(path)
            continue
        with traguardo.open(path) as s:
            groups = [(s.channels, expected["channels"], 1), (s.gps, expected["GPS"]["channels"], 1000),
                      (s.raw_gps, expected["GPS_raw"]["channels"], 1)]
            for shown, wanted, per_second in groups:
                assert len(shown) in (len(wanted), 0)
                for channel, want in zip(shown.values(), wanted):
                    assert same(channel.values, want.get("values", [])), (source, channel)
                    times = [t if isinstance(t, str) else t / per_second for t in want.get("times", [])]
                    assert same(channel.times, times), (source, channel)
                    for number, of_lap in enumerate(want["laps"], 1):
                        lap = channel.lap(number)
                        assert same(lap.values, of_lap.get("values", [])) and same(lap.times, of_lap.get("times", []))
                    compared += 1
    assert compared > 20


def put(folder, name, content=b""):
    (folder / name).write_bytes(content)
    return folder / name


def test_errors_tell_file_and_reason(tmp_path, demo, monkeypatch):
    (tmp_path / "folder.qlt").mkdir()
    legacy = put(tmp_path, "older.wmp", b"x" * 200)
    cases = [
        (tmp_path / "nothing.qlt", traguardo.NoSuchFile, "no such file"),
        (tmp_path / "folder.qlt", traguardo.NotReadable, "can't be read"),
        (put(tmp_path, "text.txt"), traguardo.UnknownKind, "not a kind"),
        (put(tmp_path, "empty.qlt"), traguardo.NoSession, "no session"),
        (legacy, traguardo.NoSuchFile, str(tmp_path / "older.jts")),
    ]
    for path, kind, words in cases:
        for spelling in (path, str(path), os.fsencode(path)):
            with pytest.raises(kind, match=words) as caught:
                traguardo.open(spelling)
            assert caught.value.path == str(path) and str(path) in str(caught.value)
    monkeypatch.setenv("TRAGUARDO_STORE_FOLDER", str(tmp_path / "missing"))
    with pytest.raises(traguardo.NoStorePlace, match="missing"):
        traguardo.open(demo)
    assert sorted(os.listdir(tmp_path)) == ["empty.qlt", "folder.qlt", "older.wmp", "text.txt"]


def test_a_wrong_clock_is_taken_back_on_request(demo, tmp_path):
    data = bytearray(Path(demo).read_bytes())
    starts = [m.start() for m in re.finditer(rb"\(S", data)]
    wrong = next(at for at in starts if 4000 < int.from_bytes(data[at + 2:at + 6], "little") < 6000)
    data[wrong + 4] ^= 0x80
    path = put(tmp_path, "clock.qlt", bytes(data))
    with traguardo.open(path) as plain, traguardo.open(path, recover=True) as whole, traguardo.open(demo) as good:
        counts = [sum(len(channel) for channel in s.channels.values()) for s in (plain, whole, good)]
    assert counts[0] < counts[1] and counts[2] - counts[1] <= 1


def test_channels_by_name(session):
    for wanted, found in [("#0", "Engine RPM"), ("SPEED", "Speed"), ("exhaust", "Exhaust Temp"),
                          ("Gap*", "Gap To Best"), ("gps lat?tude", "GPS Latitude"), ("GPS Speed", "GPS Speed")]:
        assert session[wanted].name == found
    with pytest.raises(KeyError, match='"temp" could be "Water Temp", "Oil Temp", "Exhaust Temp" or "Air Temp"'):
        session.channels["temp"]
    with pytest.raises(KeyError, match='did you mean "Throttle"'):
        session.channels["Throtle"]
    assert "gear box" not in session.channels and "gear b" in session.channels
    twice = traguardo.Channels(session, [(0, 3, "Speed", "km/h"), (0, 1, "Gear", ""), (0, 4, "Speed", "bar")])
    assert [c.index for c in twice.values()] == [3, 1, 4] and twice["Speed"].index == 3
    assert [name for name, _ in twice.items()] == list(twice) == ["Speed", "Gear", "Speed"]


def test_two_sessions_of_one_path_and_their_ends(demo):
    first, second = traguardo.open(demo), traguardo.open(demo)
    kept = first.channels["Speed"]
    values = kept.values
    first.close()
    first.close()
    assert first.closed and np.array_equal(values, second.channels["Speed"].values)
    for use in (lambda: first.channels, kept.read, lambda: kept.lap(1), lambda: first.eval("1"), first.__enter__,
                first.frame, first.__arrow_c_stream__, lambda: first.to_csv("x.csv")):
        with pytest.raises(traguardo.SessionClosed, match="closed"):
            use()
    handle = second._open_handle
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        del second
        gc.collect()
    assert [w.category for w in caught] == [ResourceWarning]
    assert traguardo._lib.get_laps_count(handle) == -1


def test_threads_that_open_read_and_close(demo):
    with traguardo.open(demo) as s:
        expected = {c.name: c.values.copy() for c in s.channels.values()}
    wrong = []

    def work(shared):
        for _ in range(5):
            try:
                with traguardo.open(demo) as own:
                    for channel in own.channels.values():
                        if not np.array_equal(channel.values, expected[channel.name]):
                            wrong.append(channel.name)
                shared.gps["GPS Speed"].read()
            except traguardo.SessionClosed:
                pass

    shared = traguardo.open(demo)
    threads = [threading.Thread(target=work, args=(shared,)) for _ in range(6)]
    for thread in threads:
        thread.start()
    threads[0].join()
    shared.close()
    for thread in threads[1:]:
        thread.join()
    assert not wrong


def test_frames_against_numpy(session):
    rate, start = 25, session.laps.loc[2, "start"]
    frame = session.frame(["Speed", "Gear", "Water Temp", "Susp*"], rate=rate, lap=2)
    at = start + np.arange(len(frame)) / rate
    assert abs(len(frame) / rate - session.laps.loc[2, "duration"]) < 1 / rate
    np.testing.assert_allclose(frame.index, at - start, atol=1e-9)
    for name in ("Speed", "Water Temp", "Suspension FL"):
        channel = session.channels[name]
        np.testing.assert_allclose(frame[name], np.interp(at, channel.times, channel.values), rtol=1e-9)
    gear = session.channels["Gear"]
    assert gear.held
    np.testing.assert_array_equal(frame["Gear"], gear.values[np.searchsorted(gear.times, at, side="right") - 1])
    whole = session.frame(["Air Temp", "Gear"], rate=100)
    assert np.isnan(whole["Air Temp"].iloc[-1]) and not np.isnan(whole["Gear"].iloc[-1])
    by_metres = session.frame("Distance", by="distance", step=10)
    driven = by_metres["Distance"].dropna()
    np.testing.assert_allclose(driven, driven.index, rtol=0.01, atol=15)  # the wheel's metres against the receiver's
    assert by_metres["time"].is_monotonic_increasing and frame.attrs["units"]["Speed"] == "km/h"
    jumping = traguardo.Samples("two parts", "", np.array([2.0, 3.0, 0.0, 1.0]), np.array([20.0, 30.0, 0.0, 10.0]))
    at = np.array([0.5, 1.5, 2.5])
    assert _frames.values_at(jumping, at, np.empty(3)).tolist() == [5, 15, 25]
    for bad in (dict(rate=0), dict(rate=1e12), dict(by="colour"), dict(lap=9), dict(lap="worst")):
        with pytest.raises((ValueError, KeyError)):
            session.frame(**bad)


def test_a_formula_against_numpy(session):
    result = session.eval("Speed / 3.6 + Gear", rate=10)
    frame = session.frame(["Speed"], rate=10)
    gear = session.channels["Gear"]
    inside = slice(5, 2000)
    rest = result.values[inside] - frame["Speed"].to_numpy()[inside] / 3.6
    assert np.isin(np.round(rest, 3), np.unique(gear.values)).mean() > 0.98
    with pytest.raises(traguardo.FormulaError, match="\n +\\^"):
        session.eval("Speed + ")


def test_laps_against_each_other(session):
    laps = session.laps
    delta = session.compare(session, lap=2, other_lap=3)["delta"]
    assert delta.iloc[-1] == pytest.approx(laps.loc[3, "duration"] - laps.loc[2, "duration"], abs=0.02)
    assert session.compare(session, lap=3, other_lap=3)["delta"].abs().max() < 1e-6
    # On a circle, a car 3 m outside is as far along as its angle says, whatever it has driven.
    angle = np.linspace(0, 2 * np.pi, 721)
    line = 100 * np.column_stack((np.cos(angle), np.sin(angle)))
    other = 1.03 * line[::7]
    found = _frames.nearest_places(100 * angle, line, 100 * angle[::7] + 4.0, other, 20)
    np.testing.assert_allclose(found, 100 * angle[::7], atol=0.02)


def test_a_notebook_shows_texts_laps_and_drawings(session):
    html = session._repr_html_()
    assert html.count("<svg") == 27 and session.info.track in html and "1:14" in html and "<script" not in html


def tool(*arguments):
    return subprocess.run([os.environ["TRAGUARDO_TOOL"], *arguments], check=True, capture_output=True, text=True).stdout


def test_one_version_everywhere():
    told = (Path(traguardo.__file__).parent.parent / "pyproject.toml").read_text()
    assert f'version = "{traguardo.__version__}"' in told and f"traguardo {traguardo.__version__}," in tool("--version")


def test_frames_formulas_and_deltas_against_the_tool(session, demo):
    """It has its own code for all three."""
    names = ["Speed", "Gear", "Air Temp", "GPS Latitude"]
    chosen = [word for name in names for word in ("--channel", name)]
    wide = pd.read_csv(io.StringIO(tool("export", demo, "-o", "-", "--wide", "--rate", "20", "--lap", "2", *chosen)))
    frame = session.frame(names, rate=20, lap=2)
    np.testing.assert_allclose(wide.iloc[:, 2:].to_numpy(), frame.to_numpy(), rtol=1e-6)
    by_metres = tool("export", demo, "-o", "-", "--wide", "--by-distance", "50", "--lap", "2", "--channel", "Speed")
    wide, frame = pd.read_csv(io.StringIO(by_metres)), session.frame("Speed", by="distance", step=50, lap=2)
    np.testing.assert_allclose(wide["Speed (km/h)"], frame["Speed"], rtol=1e-4)
    formula = json.loads(tool("eval", "Speed / 3.6 + Gear", demo, "--rate", "10", "--json"))
    result = session.eval("Speed / 3.6 + Gear", rate=10)
    assert formula["times"] == result.times.tolist() and formula["values"] == result.values.tolist()
    compared = json.loads(tool("compare", f"{demo}:2", f"{demo}:3", "--json"))
    delta = session.compare(session, lap=2, other_lap=3)["delta"]
    for point in compared["deltas"]:
        mine = np.interp(point["distance_m"], delta.index, delta)
        assert mine == pytest.approx(point["delta_s"], abs=0.01), point
