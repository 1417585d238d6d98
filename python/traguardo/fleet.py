# SPDX-License-Identifier: MIT
"""Many session files at once: one task a file, on the threads of this machine, or on a cluster of Dask's that you have.

    from traguardo import fleet
    table = fleet.laps("season/**/*.qlt")

Files are given as a pattern (`**` goes through folders), a path, or a list of both. Every file has its rows, in the
order of the list; one that can't be opened, or over which the function fails, is a row whose `reason` says why. With a
`distributed.Client`, given as `client` or made before, the tasks go to its workers, which see the files under the same
paths; a worker that dies loses nothing but time. `progress=True` shows how far it is, in a terminal or a notebook (by
default where somebody watches).
"""
from __future__ import annotations

import glob
import os
import sys
import threading
from typing import TYPE_CHECKING, Any, Callable, Iterable, Iterator, Sequence, TypeVar, Union

import numpy as np

from . import _session
from ._errors import Error
from ._session import Session

if TYPE_CHECKING:
    import pandas as pd

Paths = Union[str, "os.PathLike[str]", Iterable[Union[str, "os.PathLike[str]"]]]
Result = TypeVar("Result")
_Row = dict[str, Any]
_Answer = tuple[Any, str]  # what the function gave, and why it gave nothing


def files(paths: Paths) -> list[str]:
    """The files that a pattern or a list stands for, each once. A name without a pattern stays, whether it exists or
    not; those that a pattern finds are sorted.

    >>> files(["nothing.qlt", "demo*.qlt", "demo.qlt"])
    ['nothing.qlt', 'demo.qlt']
    """
    found: dict[str, None] = {}
    for path in [paths] if isinstance(paths, (str, os.PathLike)) else paths:
        text = os.fspath(path)
        is_pattern = glob.has_magic(text) and not os.path.exists(text)
        found.update(dict.fromkeys(sorted(glob.glob(text, recursive=True)) if is_pattern else [text]))
    return list(found)


def laps(paths: Paths, *, client: Any = None, progress: bool | None = None) -> "pd.DataFrame":
    """The laps of all files: `path`, `lap`, `start` and `duration` (s), `finished`, `gap` to the file's best (s), and
    `reason`, which is empty but for a file that can't be read.

    >>> laps("demo.qlt").groupby("path")["duration"].min().round(3)["demo.qlt"]
    74.286
    >>> laps(["nothing.qlt"]).loc[0, "reason"]
    'no such file'
    """
    return _table(files(paths), _laps_of, ["lap", "start", "duration", "finished", "gap"], client, progress)


def stats(paths: Paths, channels: Sequence[str], *, per: str = "lap", client: Any = None,
          progress: bool | None = None) -> "pd.DataFrame":
    """Figures of channels, `per` "lap" or "file": `samples`, and `min`, `max`, `mean`, `std`, `first`, `last` over
    those that are numbers, in the channel's `unit`. A channel that a file lacks is a row with the reason.

    >>> stats("demo.qlt", ["Speed"], per="file")[["channel", "samples", "max"]].round(2).values.tolist()
    [['Speed', 23130, 223.64]]
    """
    if per not in ("lap", "file"):
        raise ValueError('per must be "lap" or "file"')
    columns = ["lap", "channel", "unit", "samples", "min", "max", "mean", "std", "first", "last"]
    return _table(files(paths), _Stats(list(channels), per), columns if per == "lap" else columns[1:], client, progress)


def map(paths: Paths, function: Callable[[Session], Result], *, client: Any = None,
        progress: bool | None = None) -> "pd.DataFrame":
    """What a function gives of each open session: `path`, `result`, `reason`. For workers of a cluster, function and
    results must be such that Python can pickle them.

    >>> map("demo.qlt", lambda s: len(s.channels))["result"].tolist()
    [27]
    """
    import pandas as pd
    names = files(paths)
    answers = _answers(names, function, client, progress)
    results = pd.Series([answer[0] for answer in answers], dtype=object)
    if not any(answer[1] for answer in answers):
        results = results.infer_objects()
    return pd.DataFrame({"path": names, "result": results, "reason": [answer[1] for answer in answers]})


# --- What a task does

def _one(path: str, function: Callable[[Session], Any]) -> _Answer:
    try:
        with _session.open(path) as session:
            return function(session), ""
    except Error as error:
        return None, error.reason
    except Exception as error:  # the next file is no worse for it
        return None, f"{type(error).__name__}: {error}"


def _laps_of(session: Session) -> list[_Row]:
    table = session.laps
    return [{"lap": int(number), **row} for number, row in zip(table.index, table.to_dict("records"))]


class _Stats:
    def __init__(self, channels: list[str], per: str) -> None:
        self.channels = channels
        self.per = per

    def __call__(self, session: Session) -> list[_Row]:
        return [row for name in self.channels for row in self._of_channel(session, name)]

    def _of_channel(self, session: Session, name: str) -> Iterator[_Row]:
        try:
            channel = session[name]
        except Error as error:
            yield {"channel": name, "reason": error.reason}
            return
        if self.per == "file":
            yield {"channel": channel.name, "unit": channel.unit, **figures(channel.values)}
            return
        for number in range(1, len(session._lap_rows) + 1):
            yield {"lap": number, "channel": channel.name, "unit": channel.unit, **figures(channel.lap(number).values)}


def figures(values: _session.Numbers) -> _Row:
    """Number of samples, and figures of those that are numbers.

    >>> figures(np.array([1.0, np.nan, 3.0]))
    {'samples': 3, 'min': 1.0, 'max': 3.0, 'mean': 2.0, 'std': 1.0, 'first': 1.0, 'last': 3.0}
    """
    numbers = values[np.isfinite(values)]
    row: _Row = {"samples": len(values)}
    if len(numbers):
        row.update(min=float(numbers.min()), max=float(numbers.max()), mean=float(numbers.mean()),
                   std=float(numbers.std()), first=float(numbers[0]), last=float(numbers[-1]))
    return row


def _table(names: list[str], function: Callable[[Session], list[_Row]], columns: list[str], client: Any,
           progress: bool | None) -> "pd.DataFrame":
    import pandas as pd
    rows: list[_Row] = []
    for name, (found, reason) in zip(names, _answers(names, function, client, progress)):
        rows += [{"path": name, "reason": "", **row} for row in found] if found else [
            {"path": name, "reason": reason or "no laps"}]
    return pd.DataFrame(rows, columns=["path", *columns, "reason"])


# --- Where it is done

def _answers(names: list[str], function: Callable[[Session], Any], client: Any, progress: bool | None) -> list[_Answer]:
    client = client or _client_at_hand()
    with _Progress(len(names), progress) as shown:
        if client is not None:
            return _on_cluster(client, names, function, shown)
        return _on_threads(names, function, shown)


def _client_at_hand() -> Any:
    distributed = sys.modules.get("distributed")
    if distributed is None:
        return None
    try:
        return distributed.default_client()
    except ValueError:
        return None


def _on_threads(names: list[str], function: Callable[[Session], Any], shown: "_Progress") -> list[_Answer]:
    import dask
    import dask.threaded

    def task(name: str) -> _Answer:
        answer = _one(name, function)
        shown.advance()
        return answer

    graph = {f"file-{i}": (task, name) for i, name in enumerate(names)}
    workers = dask.config.get("num_workers", None) or len(os.sched_getaffinity(0))
    return list(dask.threaded.get(graph, list(graph), num_workers=workers))


def _on_cluster(client: Any, names: list[str], function: Callable[[Session], Any], shown: "_Progress") -> list[_Answer]:
    from distributed import as_completed
    # A path means the same to a worker that runs in another folder. All in one message, and answers by the batch: with
    # small files the scheduler would else cost as much as a worker.
    paths = [os.path.abspath(name) for name in names]
    futures = client.map(_one, paths, function=function, pure=False, batch_size=len(paths) or None)
    places = {future.key: i for i, future in enumerate(futures)}
    answers: list[_Answer] = [(None, "")] * len(names)
    for batch in as_completed(futures, with_results=True, raise_errors=False).batches():
        for future, answer in batch:
            if future.status != "finished":  # the exception with its place, such as of a worker that dies of this file
                answer = (None, f"{answer[0].__name__}: {answer[1]}")
            answers[places[future.key]] = answer
        shown.advance(len(batch))
    return answers


class _Progress:
    """How many files are done: a line in a terminal, a bar in a notebook."""

    def __init__(self, total: int, wanted: bool | None) -> None:
        self._total = total
        self._done = 0
        self._lock = threading.Lock()
        self._display: Any = None
        in_notebook = "ipykernel" in sys.modules
        self._shown = (in_notebook or sys.stderr.isatty()) if wanted is None else wanted
        self._in_notebook = in_notebook

    def __enter__(self) -> "_Progress":
        self._show()
        return self

    def __exit__(self, *_: object) -> None:
        if self._shown and not self._in_notebook:
            print(file=sys.stderr)

    def advance(self, files: int = 1) -> None:
        with self._lock:
            self._done += files
            self._show()

    def _show(self) -> None:
        if not self._shown:
            return
        if not self._in_notebook:
            print(f"\r{self._done} of {self._total} files", end="", file=sys.stderr, flush=True)
            return
        from IPython.display import HTML, display
        bar = HTML(f'<progress max="{self._total}" value="{self._done}"></progress> '
                   f"{self._done} of {self._total} files")
        if self._display is None:
            self._display = display(bar, display_id=True)
        else:
            self._display.update(bar)
