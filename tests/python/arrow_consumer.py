# SPDX-License-Identifier: MIT
"""A consumer of Arrow's C interfaces that takes nothing on trust: it checks the rules, and releases what it got."""
import ctypes as ct

import numpy as np


class Schema(ct.Structure):
    pass


class Array(ct.Structure):
    pass


class Stream(ct.Structure):
    pass


P, I64, TEXT = ct.POINTER, ct.c_int64, ct.c_char_p
Schema._fields_ = [("format", TEXT), ("name", TEXT), ("metadata", ct.c_void_p), ("flags", I64), ("n_children", I64),
                   ("children", P(P(Schema))), ("dictionary", P(Schema)), ("release", ct.CFUNCTYPE(None, P(Schema))),
                   ("private_data", ct.c_void_p)]
Array._fields_ = [("length", I64), ("null_count", I64), ("offset", I64), ("n_buffers", I64), ("n_children", I64),
                  ("buffers", P(ct.c_void_p)), ("children", P(P(Array))), ("dictionary", P(Array)),
                  ("release", ct.CFUNCTYPE(None, P(Array))), ("private_data", ct.c_void_p)]
Stream._fields_ = [("get_schema", ct.CFUNCTYPE(ct.c_int, P(Stream), P(Schema))),
                   ("get_next", ct.CFUNCTYPE(ct.c_int, P(Stream), P(Array))),
                   ("get_last_error", ct.CFUNCTYPE(TEXT, P(Stream))), ("release", ct.CFUNCTYPE(None, P(Stream))),
                   ("private_data", ct.c_void_p)]

_pointer = ct.pythonapi.PyCapsule_GetPointer
_pointer.restype, _pointer.argtypes = ct.c_void_p, [ct.py_object, TEXT]


def taken(capsule, kind, name):
    """The struct moved out of its capsule, as a consumer shall do: a copy, and the original marked released."""
    original = kind.from_address(_pointer(capsule, name))
    assert original.release, "released already"
    copy = kind()
    ct.memmove(ct.byref(copy), ct.byref(original), ct.sizeof(kind))
    ct.memset(ct.byref(original, kind.release.offset), 0, ct.sizeof(ct.c_void_p))
    assert not original.release
    return copy


def released(struct):
    struct.release(ct.byref(struct))
    assert not struct.release, "release must clear itself"


def metadata(schema):
    if not schema.metadata:
        return {}
    at, found = schema.metadata, {}

    def number():
        nonlocal at
        at += 4
        return ct.c_int32.from_address(at - 4).value

    def text():
        nonlocal at
        length = number()
        at += length
        return ct.string_at(at - length, length).decode()

    for _ in range(number()):
        key = text()
        found[key] = text()
    return found


def values(schema, array):
    """An array in Python's terms, copied; by the formats that the package gives out."""
    assert array.release and array.offset == 0 and array.null_count == 0 and not schema.flags & 2
    assert bool(schema.dictionary) == bool(array.dictionary) and schema.n_children == array.n_children
    assert not array.buffers[0], "no nulls, no bits for them"
    n = array.length
    if schema.format == b"+s":
        assert array.n_buffers == 1
        assert all(array.children[i].contents.length == n for i in range(array.n_children))
        pairs = [(schema.children[i].contents, array.children[i].contents) for i in range(array.n_children)]
        return {field.name.decode(): values(field, child) for field, child in pairs}
    if schema.format == b"u":
        assert array.n_buffers == 3
        ends = np.frombuffer(ct.string_at(array.buffers[1], 4 * (n + 1)), np.int32).tolist()
        return [ct.string_at(array.buffers[2] + a, b - a).decode() for a, b in zip(ends, ends[1:])]
    assert array.n_buffers == 2
    kind = {b"g": np.float64, b"i": np.int32}[schema.format]
    numbers = np.frombuffer(ct.string_at(array.buffers[1], n * np.dtype(kind).itemsize), kind)
    if not schema.dictionary:
        return numbers
    words = values(schema.dictionary.contents, array.dictionary.contents)
    assert len(set(words)) == len(words)
    return [words[i] for i in numbers]
