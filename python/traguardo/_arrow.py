# SPDX-License-Identifier: MIT
"""Samples as Arrow's PyCapsules, so that any library that speaks them takes a channel or a session as it is.

The structs and all that they point to are the library's, and so are the functions that release them: a consumer may do
that in any thread, and after the interpreter has ended.
"""
from __future__ import annotations

import ctypes
import errno
from typing import TYPE_CHECKING, Any, Sequence

from ._library import lib

if TYPE_CHECKING:
    from ._session import Channel, Numbers

# Pointers and 64-bit words only.
_SCHEMA_BYTES, _ARRAY_BYTES, _STREAM_BYTES = (fields * 8 for fields in (9, 10, 5))

_new_capsule = ctypes.pythonapi.PyCapsule_New
_new_capsule.restype = ctypes.py_object
_new_capsule.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p]
lib.tg_arrow_start(ctypes.cast(ctypes.pythonapi.PyCapsule_GetPointer, ctypes.c_void_p))

# A capsule keeps the address of its name for as long as it lives.
_SCHEMA, _ARRAY, _STREAM = (ctypes.c_char_p(name) for name in (b"arrow_schema", b"arrow_array", b"arrow_array_stream"))
_GONE = {
    id(_SCHEMA): ctypes.cast(lib.tg_arrow_schema_capsule_gone, ctypes.c_void_p),
    id(_ARRAY): ctypes.cast(lib.tg_arrow_array_capsule_gone, ctypes.c_void_p),
    id(_STREAM): ctypes.cast(lib.tg_arrow_stream_capsule_gone, ctypes.c_void_p),
}


def _capsule(name: ctypes.c_char_p, size: int) -> tuple[Any, int]:
    """A capsule around a struct of zeros, which nothing has to release yet, and the struct's address."""
    address = lib.tg_arrow_struct(size)
    if not address:
        raise MemoryError
    return _new_capsule(address, name, _GONE[id(name)]), address


def _raise_for(code: int) -> None:
    if code == errno.ENOMEM:
        raise MemoryError
    if code:
        raise OSError(code, "the samples can't be given as Arrow arrays")


def samples_as_array(times: "Numbers", values: "Numbers", name: str, unit: str) -> tuple[object, object]:
    schema, schema_address = _capsule(_SCHEMA, _SCHEMA_BYTES)
    array, array_address = _capsule(_ARRAY, _ARRAY_BYTES)
    _raise_for(lib.tg_arrow_samples(times.ctypes.data, values.ctypes.data, len(times), _bytes(name), _bytes(unit),
                                    schema_address, array_address))
    return schema, array


def channels_as_stream(handle: int, channels: Sequence["Channel"]) -> object:
    count = len(channels)
    kinds = (ctypes.c_int * count)(*(channel.kind for channel in channels))
    indexes = (ctypes.c_int * count)(*(channel.index for channel in channels))
    names = (ctypes.c_char_p * count)(*(_bytes(channel.name) for channel in channels))
    units = (ctypes.c_char_p * count)(*(_bytes(channel.unit) for channel in channels))
    stream, address = _capsule(_STREAM, _STREAM_BYTES)
    _raise_for(lib.tg_arrow_channels(handle, kinds, indexes, names, units, count, address))
    return stream


def _bytes(text: str) -> bytes:
    return text.encode("utf-8", "surrogateescape")
