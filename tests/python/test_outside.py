# SPDX-License-Identifier: MIT
"""What leaves the package: Arrow streams, files, fleets."""
import ctypes as ct
import gc
import html
import json
import os
import re
import resource
import signal
import threading
import time

import numpy as np
import pandas as pd
import pytest

import traguardo
from traguardo import fleet

from arrow_consumer import Array, Schema, Stream, metadata, released, taken, values
from conftest import simulate


def test_a_channel_as_an_arrow_array(session):
    channel = session.channels["Lambda"]
    schema_capsule, array_capsule = channel.__arrow_c_array__()
    schema, array = taken(schema_capsule, Schema, b"arrow_schema"), taken(array_capsule, Array, b"arrow_array")
    del schema_capsule, array_capsule
    gc.collect()
    session.close()  # the array stands for itself
    got = values(schema, array)
    assert (got["time"] == channel.times).all() and (got["value"] == channel.values).all()
    assert metadata(schema.children[1].contents) == {"unit": "\u03bb"}
    # A child may be moved out and outlive its parent.
    child = array.children[1].contents
    moved = Array()
    ct.memmove(ct.byref(moved), ct.byref(child), ct.sizeof(Array))
    ct.memset(ct.byref(child, Array.release.offset), 0, ct.sizeof(ct.c_void_p))
    released(array)
    assert (values(schema.children[1].contents, moved) == channel.values).all()
    released(moved)
    released(schema)


@pytest.mark.parametrize("take", [True, False])
def test_arrow_leaves_no_memory_behind(session, take):
    times = np.arange(1e6)
    samples = traguardo.Samples("a", "b", times, times)

    def once():
        capsules = samples.__arrow_c_array__()
        if take:
            for capsule, kind, name in zip(capsules, (Schema, Array), (b"arrow_schema", b"arrow_array")):
                released(taken(capsule, kind, name))

    once()
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    for _ in range(50):
        once()
    assert resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before < 64 * 1024  # KiB; 800 MB went through


def test_a_session_as_an_arrow_stream(demo):
    session = traguardo.open(demo)
    handle = session._open_handle
    expected = [(c.name, c.unit, c.read()) for c in session.channels.values()]
    stream = taken(session.__arrow_c_stream__(), Stream, b"arrow_array_stream")
    session.close()  # the stream keeps the file
    with traguardo.open(demo) as another:
        assert another._open_handle != handle
    schema, again, batch = Schema(), Schema(), Array()
    for out in (schema, again):
        assert stream.get_schema(ct.byref(stream), ct.byref(out)) == 0
    released(again)
    for name, unit, (times, read) in expected:
        assert stream.get_next(ct.byref(stream), ct.byref(batch)) == 0 and batch.release
        got = values(schema, batch)
        assert set(got["channel"]) == {name} and set(got["unit"]) == {unit}
        assert (got["time"] == times).all() and (got["value"] == read).all()
        released(batch)
    assert stream.get_next(ct.byref(stream), ct.byref(batch)) == 0 and not batch.release
    assert traguardo._lib.get_laps_count(handle) == 3
    released(stream)
    released(schema)
    assert traguardo._lib.get_laps_count(handle) == -1
    with traguardo.open(demo) as other:
        unused = other.gps.__arrow_c_stream__()
    del unused


def test_files_hold_what_the_session_has(session, tmp_path):
    h5py, scipy_io = pytest.importorskip("h5py"), pytest.importorskip("scipy.io")
    session.to_hdf5(tmp_path / "s.h5")
    session.to_mat(tmp_path / "s.mat")
    session.to_csv(tmp_path / "wide.csv", channels=["Speed", "Air Temp", "GPS Speed"], rate=20, lap=2)
    session.to_csv(tmp_path / "long.csv", wide=False, channels=["Speed", "Gear"])
    mat = scipy_io.loadmat(tmp_path / "s.mat", squeeze_me=True)
    with h5py.File(tmp_path / "s.h5") as out:
        assert list(out["channels"]) == list(session.channels) and out.attrs["track"] == session.info.track
        pd.testing.assert_frame_equal(pd.DataFrame(out["laps"][:]).set_index("lap"), session.laps, check_dtype=False,
                                      check_index_type=False)
        for folder, channels in (("channels", session.channels), ("gps", session.gps)):
            for channel in channels.values():
                group, cell = out[folder][channel.name], mat[channel.name.replace(" ", "_")]
                assert (group["times"][:] == channel.times).all() and (group["values"][:] == channel.values).all()
                assert (group.attrs["unit"], group.attrs["rate"]) == (channel.unit, channel.rate)
                assert (cell["times"].item() == channel.times).all() and (cell["values"].item() == channel.values).all()
    wide = pd.read_csv(tmp_path / "wide.csv", index_col=0, float_precision="round_trip")
    frame = session.frame(["Speed", "Air Temp", "GPS Speed"], rate=20, lap=2)
    assert wide.columns.tolist() == ["Speed (km/h)", "Air Temp (C)", "GPS Speed (m/s)"]
    np.testing.assert_array_equal(wide.to_numpy(), frame.to_numpy())
    long = pd.read_csv(tmp_path / "long.csv", float_precision="round_trip").groupby("channel")
    assert (long.get_group("Gear")["value"].to_numpy() == session.channels["Gear"].values).all()
    before = sorted(os.listdir(tmp_path))
    with pytest.raises(KeyError):
        session.to_csv(tmp_path / "new.csv", channels=["nothing"])
    with pytest.raises(ValueError, match="the session itself"):
        session.to_hdf5(session.path)
    assert sorted(os.listdir(tmp_path)) == before


def test_a_fleet_says_what_is_wrong_with_a_file(demo, tmp_path):
    broken = tmp_path / "broken.qlt"
    broken.write_bytes(b"nothing")
    paths = [demo, str(broken), str(tmp_path / "none.qlt")]
    table = fleet.laps(paths)
    assert table["path"].tolist() == [demo] * 3 + paths[1:] and table["reason"].tolist()[3:] == [
        "no session can be read from it", "no such file"]
    with traguardo.open(demo) as session:
        assert table["duration"].tolist()[:3] == session.laps["duration"].tolist()
        row = fleet.stats(demo, ["Speed", "Odour"]).iloc[1]
        lap = session.channels["Speed"].lap(2).values
        assert (row["samples"], row["min"], row["mean"]) == (len(lap), lap.min(), lap.mean())
    wrong = fleet.map(paths, lambda s: 1 / 0)
    assert wrong["reason"].tolist()[0] == "ZeroDivisionError: division by zero"


def test_a_fleet_survives_the_death_of_a_worker(tmp_path):
    distributed = pytest.importorskip("distributed")
    for i in range(200):
        simulate(tmp_path / f"{i:03}.qlt", "--minutes", "0.1", "--seed", str(i))
    (tmp_path / "100.qlt").write_bytes(b"broken")
    pattern = str(tmp_path / "*.qlt")
    done = tmp_path / "done"
    done.mkdir()

    def slowly(session):
        time.sleep(0.01)
        (done / os.path.basename(session.path)).touch()
        return session.channels["Speed"].values.sum()

    def killer(pid):
        while len(os.listdir(done)) < 60:
            time.sleep(0.005)
        os.kill(pid, signal.SIGKILL)
        killed.append(len(os.listdir(done)))

    expected, killed = fleet.map(pattern, slowly), []
    for file in done.iterdir():
        file.unlink()
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None,
                                       local_directory=str(tmp_path / "dask"))
    with cluster, distributed.Client(cluster) as client:
        victim = next(iter(client.run(os.getpid).values()))
        thread = threading.Thread(target=killer, args=(victim,))
        thread.start()
        table = fleet.map(pattern, slowly, client=client)
        thread.join()
    assert 60 <= killed[0] < 190
    pd.testing.assert_frame_equal(table, expected)
    assert len(table) == 200 and table["reason"].tolist().count("") == 199


def test_progress_in_a_terminal(demo, capsys):
    fleet.laps([demo, demo + "x"], progress=True)
    assert capsys.readouterr().err.endswith("\r2 of 2 files\n")


def test_a_page_of_a_session(session, tmp_path):
    page = tmp_path / "page.html"
    try:
        session.page(page, channels=["Speed", "Gear"], laps="best")
    except traguardo.Error as error:
        assert "built without" in str(error)
        pytest.skip(str(error))
    text = page.read_text(encoding="utf-8")
    head = json.loads(re.search('id="head">(.*?)</script>', text).group(1))["files"][0]
    assert [channel["name"] for channel in head["channels"]] == ["Speed", "Gear"]
    assert [lap["kept"] for lap in head["laps"]].count(True) == 1
    frame = session.show(channels=["Speed", "Gear"], laps="best")._repr_html_()
    assert html.unescape(re.search('srcdoc="([^"]*)"', frame).group(1)) == text
    with pytest.raises(traguardo.Error, match="no channel"):
        session.page(page, channels="Spoon")
    assert page.read_text(encoding="utf-8") == text
