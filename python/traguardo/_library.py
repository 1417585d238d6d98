# SPDX-License-Identifier: MIT
"""The library behind the package, called through ctypes: every call gives the interpreter's lock up while it runs."""
from __future__ import annotations

import ctypes
import os
import sys
from pathlib import Path
from typing import Any

_INT, _INT64, _DOUBLE = ctypes.c_int, ctypes.c_int64, ctypes.c_double
_TEXT, _PLACE = ctypes.c_char_p, ctypes.c_void_p
_INT_OUT, _DOUBLE_OUT = ctypes.POINTER(_INT), ctypes.POINTER(_DOUBLE)

# What kind of channel a function is about, in the order that the library numbers them.
LOGGED, GPS, RAW_GPS = range(3)
_KIND_NAMES = ("channel", "GPS_channel", "GPS_raw_channel")


def _location() -> str:
    named = os.environ.get("TRAGUARDO_PYTHON_LIBRARY")  # for a build tree
    if named:
        return named
    ending = ".dll" if sys.platform == "win32" else ".so"
    return str(Path(__file__).with_name("_traguardo" + ending))


def _declared() -> ctypes.CDLL:
    lib = ctypes.CDLL(_location())
    rows: list[tuple[str, Any, list[Any]]] = [
        ("close_file_i", _INT, [_INT]),
        ("get_library_date", _TEXT, []),
        ("get_library_time", _TEXT, []),
        ("get_date_and_time", _PLACE, [_INT]),
        ("get_laps_count", _INT, [_INT]),
        ("get_lap_info", _INT, [_INT, _INT, _DOUBLE_OUT, _DOUBLE_OUT]),
        ("tg_choose_home", None, [_TEXT]),
        ("tg_can_make_files_in", _INT, [_TEXT]),
        ("tg_trace_path", _INT, [_TEXT, _TEXT, _INT]),
        ("tg_open", _INT, [_TEXT, _INT, _TEXT, _INT_OUT]),
        ("tg_keep", None, [_INT]),
        ("tg_close", None, [_INT]),
        ("tg_lap_finished", _INT, [_INT, _INT]),
        ("tg_channel_record", _INT, [_INT, _INT, _DOUBLE_OUT, _DOUBLE_OUT, _INT_OUT, _INT_OUT]),
        ("tg_values_at", _INT, [_PLACE, _PLACE, _INT64, _INT, _PLACE, _INT64, _PLACE]),
        ("tg_formula_points", _INT64, [_INT, _DOUBLE]),
        ("tg_formula", _INT, [_INT, _TEXT, _DOUBLE, _PLACE, _INT64, _INT_OUT, _TEXT, _INT]),
        ("tg_arrow_start", None, [_PLACE]),
        ("tg_arrow_struct", _PLACE, [_INT64]),
        ("tg_arrow_samples", _INT, [_PLACE, _PLACE, _INT64, _TEXT, _TEXT, _PLACE, _PLACE]),
        ("tg_arrow_channels", _INT, [_INT, _PLACE, _PLACE, _PLACE, _PLACE, _INT, _PLACE]),
    ]
    rows += [(f"get_{text}_name", _TEXT, [_INT])
             for text in ("vehicle", "track", "racer", "championship", "venue_type")]
    for name in _KIND_NAMES:
        rows += [
            (f"get_{name}s_count", _INT, [_INT]),
            (f"get_{name}_name", _TEXT, [_INT, _INT]),
            (f"get_{name}_units", _TEXT, [_INT, _INT]),
            (f"get_{name}_samples_count", _INT, [_INT, _INT]),
            (f"get_{name}_samples", _INT, [_INT, _INT, _PLACE, _PLACE, _INT]),
            (f"get_lap_{name}_samples_count", _INT, [_INT, _INT, _INT]),
            (f"get_lap_{name}_samples", _INT, [_INT, _INT, _INT, _PLACE, _PLACE, _INT]),
        ]
    for function, result, arguments in rows:
        declared = getattr(lib, function)
        declared.restype = result
        declared.argtypes = arguments
    return lib


def _user_folder() -> bytes:
    """Configuration files and tables are the user's, not those of the interpreter's installation."""
    if sys.platform == "win32":
        return os.fsencode(os.path.join(os.environ.get("APPDATA", "NUL"), "traguardo"))
    chosen = os.environ.get("XDG_CONFIG_HOME", "")
    home = os.path.expanduser("~")
    if not chosen.startswith("/"):  # a relative path is none, by the rule for these folders
        chosen = os.path.join(home, ".config") if os.access(home, os.X_OK) else "/dev/null"
    return os.fsencode(os.path.join(chosen, "traguardo"))


lib = _declared()
lib.tg_choose_home(_user_folder())


class Functions:
    """The exported functions of one kind of channel."""

    def __init__(self, kind: int) -> None:
        name = _KIND_NAMES[kind]
        self.channels_count = getattr(lib, f"get_{name}s_count")
        self.name = getattr(lib, f"get_{name}_name")
        self.units = getattr(lib, f"get_{name}_units")
        self.samples_count = getattr(lib, f"get_{name}_samples_count")
        self.samples = getattr(lib, f"get_{name}_samples")
        self.lap_samples_count = getattr(lib, f"get_lap_{name}_samples_count")
        self.lap_samples = getattr(lib, f"get_lap_{name}_samples")


FUNCTIONS = tuple(Functions(kind) for kind in (LOGGED, GPS, RAW_GPS))


def text_of(raw: bytes | None) -> str:
    """A text of a file, which says nothing of its encoding."""
    if raw is None:
        return ""
    try:
        return raw.decode("utf-8")
    except UnicodeDecodeError:
        return raw.decode("latin-1")


def unit_of(raw: bytes | None) -> str:
    # Loggers write the unit of lambda as this one byte.
    return "\u03bb" if raw == b"\xbb" else text_of(raw)
