# SPDX-License-Identifier: MIT
"""Sessions of motorsport data loggers (.qlt, .qlc, .wmp) as NumPy arrays, pandas frames and Arrow streams.

    import traguardo
    with traguardo.open("session.qlt") as s:
        speed = s.channels["Speed"].values

`open` gives a `Session`; `traguardo.fleet` works on many files at once.
"""
from ._errors import (Error, FormulaError, NoSession, NoStorePlace, NoSuchChannel, NoSuchFile, NoSuchLap, NotReadable,
                      OutOfMemory, SessionClosed, UnknownKind)
from ._library import lib as _lib
from ._session import Channel, Channels, Info, Samples, Session, open

__version__ = "1.0.0"
__all__ = ["Channel", "Channels", "Error", "FormulaError", "Info", "NoSession", "NoStorePlace", "NoSuchChannel",
           "NoSuchFile", "NoSuchLap", "NotReadable", "OutOfMemory", "Samples", "Session", "SessionClosed",
           "UnknownKind", "open"]


def library_date() -> str:
    """When the library was built, as in "Aug  1 2018 12:22:53"."""
    return f"{_lib.get_library_date().decode()} {_lib.get_library_time().decode()}"
